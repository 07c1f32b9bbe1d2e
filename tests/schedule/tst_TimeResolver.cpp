#include "ResolverScene.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTest>

class tst_TimeResolver : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void fixedStartIsTheFixedTimeRewritten_data();
    void fixedStartIsTheFixedTimeRewritten();
    void startTypeTells_data();
    void startTypeTells();

    void linkedTimeIsTheTargetsPlusTheOffset_data();
    void linkedTimeIsTheTargetsPlusTheOffset();

    void fixedEndIsADurationFromBegin_data();
    void fixedEndIsADurationFromBegin();
    void endTypeTells_data();
    void endTypeTells();
    void cyclesAreCountedFromBegin_data();
    void cyclesAreCountedFromBegin();
    void theEndCountsFromTheBeginOfThisPass();

    void aPassEmptiesTheDictionaryAndEntersEveryChild();
    void resolvingOneChildResolvesItsTargetsToo();
    void resolvingAMarkedChildDoesNothing();
    void aMarkedTargetGivesTheTimeThatItHolds();
    void resolvingNullDoesNothing();

    void aPassThatMovesNothingNotifiesNobody();
    void withoutTheDebugChannelNothingIsWritten();
};

void tst_TimeResolver::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
}

// --- The start rule ---

void tst_TimeResolver::fixedStartIsTheFixedTimeRewritten_data()
{
    QTest::addColumn<QString>("fixedTime");
    QTest::addColumn<QString>("begin");
    QTest::newRow("a time") << "2000" << "2000";
    QTest::newRow("the largest") << "4294967295" << "4294967295";
    QTest::newRow("other spellings") << " +007" << "7";
    QTest::newRow("too large") << "4294967296" << "0";
    QTest::newRow("negative") << "-5" << "0";
    QTest::newRow("not whole") << "1.5" << "0";
    QTest::newRow("no number") << "soon" << "0";
    QTest::newRow("empty") << "" << "0";
}

void tst_TimeResolver::fixedStartIsTheFixedTimeRewritten()
{
    QFETCH(const QString, fixedTime);
    ResolverScene scene;
    StubEffect &child = scene.add(1, fixed(0)).with("startfixedtime", fixedTime).with("begin", 99);
    scene.pass();
    QTEST(child.text("begin"), "begin");
    QCOMPARE(child.text("startfixedtime"), fixedTime);
}

void tst_TimeResolver::startTypeTells_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("begin");
    const QString stays = " +0777";
    QTest::newRow("0: fixed") << "0" << "50";
    QTest::newRow("1: linked") << "1" << "1010";
    QTest::newRow("2: none") << "2" << stays;
    QTest::newRow("3: none") << "3" << stays;
    QTest::newRow("5: none") << "5" << stays;
    QTest::newRow("the largest: none") << "4294967295" << stays;
    QTest::newRow("no number: fixed") << "linked" << "50";
    QTest::newRow("negative: fixed") << "-1" << "50";
    QTest::newRow("empty: fixed") << "" << "50";
}

void tst_TimeResolver::startTypeTells()
{
    QFETCH(const QString, type);
    ResolverScene scene;
    scene.add(1, fixed(1000), fixed(500));
    StubEffect &child = scene.add(2, toStartOf(1, 10), fixed(3))
                            .with("startfixedtime", 50)
                            .with("begin", QStringLiteral(" +0777"))
                            .with("starttype", type);
    scene.pass();
    QTEST(child.text("begin"), "begin");
    QCOMPARE(child.text("starttype"), type);
}

// --- Links; both rules convert in the same way ---

void tst_TimeResolver::linkedTimeIsTheTargetsPlusTheOffset_data()
{
    QTest::addColumn<QString>("side");
    QTest::addColumn<quint32>("targetBegin");
    QTest::addColumn<QString>("offset");
    QTest::addColumn<QString>("time");
    const quint32 largest = 4294967295;

    // The target ends 1000 ms after its begin.
    QTest::newRow("its begin") << "1" << 2000u << "500" << "2500";
    QTest::newRow("its end") << "0" << 2000u << "500" << "3500";
    QTest::newRow("side in words") << "true" << 2000u << "0" << "2000";
    QTest::newRow("side missing: its end") << QString() << 2000u << "0" << "3000";
    QTest::newRow("side no flag: its end") << "start" << 2000u << "0" << "3000";

    QTest::newRow("negative offset") << "1" << 2000u << "-500" << "1500";
    QTest::newRow("to exactly 0") << "1" << 1000u << "-1000" << "0";
    QTest::newRow("below 0") << "1" << 1000u << "-3000" << "0";
    QTest::newRow("far below 0") << "1" << 1000u << "-1e300" << "0";
    QTest::newRow("fraction") << "1" << 1000u << "0.75" << "1000";
    QTest::newRow("fraction below") << "1" << 1000u << "-0.25" << "999";
    QTest::newRow("fraction just above 0") << "1" << 1u << "-0.25" << "0";
    QTest::newRow("fraction just below 0") << "1" << 0u << "-0.25" << "0";
    QTest::newRow("exponent") << "1" << 1u << "1.23457e+06" << "1234571";
    QTest::newRow("negative exponent") << "1" << 2000000u << "-1.23457e+06" << "765430";

    QTest::newRow("largest") << "1" << largest << "0" << "4294967295";
    QTest::newRow("reaches the largest") << "1" << 4294967290u << "5" << "4294967295";
    QTest::newRow("beyond the largest") << "1" << 4294967290u << "6" << "4294967295";
    QTest::newRow("fraction beyond") << "1" << largest << "0.5" << "4294967295";
    QTest::newRow("fraction before") << "1" << largest << "-0.5" << "4294967294";
    QTest::newRow("far beyond") << "1" << 0u << "1e300" << "4294967295";

    QTest::newRow("inf") << "1" << 1000u << "inf" << "4294967295";
    QTest::newRow("-inf") << "1" << 1000u << "-inf" << "0";
    QTest::newRow("nan") << "1" << 1000u << "nan" << "0";
    QTest::newRow("-0") << "1" << 0u << "-0" << "0";
    QTest::newRow("offset missing") << "1" << 1000u << QString() << "1000";
    QTest::newRow("offset empty") << "1" << 1000u << "" << "1000";
    QTest::newRow("offset no number") << "1" << 1000u << "1,5" << "1000";
    QTest::newRow("offset too large for a number") << "1" << 1000u << "1e400" << "1000";
}

void tst_TimeResolver::linkedTimeIsTheTargetsPlusTheOffset()
{
    QFETCH(const QString, side);
    QFETCH(const quint32, targetBegin);
    QFETCH(const QString, offset);
    ResolverScene scene;
    scene.add(1, fixed(targetBegin), fixed(1000));
    StubEffect &child = scene.add(2);
    for (const QString &rule : {QStringLiteral("start"), QStringLiteral("end")}) {
        child.setProperty(rule + "type", "1");
        child.setProperty(rule + "linkeid", "1");
        if (!side.isNull())
            child.setProperty(rule + "linkstart", side);
        if (!offset.isNull())
            child.setProperty(rule + "linkoffset", offset);
    }
    scene.pass();
    QTEST(child.text("begin"), "time");
    QTEST(child.text("end"), "time");
}

// --- The end rule ---

void tst_TimeResolver::fixedEndIsADurationFromBegin_data()
{
    QTest::addColumn<quint32>("begin");
    QTest::addColumn<QString>("duration");
    QTest::addColumn<QString>("end");
    QTest::newRow("a duration") << 2000u << "3000" << "5000";
    QTest::newRow("nothing") << 2000u << "0" << "2000";
    QTest::newRow("to the largest") << 4294967290u << "5" << "4294967295";
    QTest::newRow("wraps") << 4294967290u << "6" << "0";
    QTest::newRow("wraps far") << 4294967295u << "4294967295" << "4294967294";
    QTest::newRow("no number") << 2000u << "long" << "2000";
    QTest::newRow("negative") << 2000u << "-1" << "2000";
    QTest::newRow("too large for a number") << 2000u << "4294967296" << "2000";
}

void tst_TimeResolver::fixedEndIsADurationFromBegin()
{
    QFETCH(const quint32, begin);
    QFETCH(const QString, duration);
    ResolverScene scene;
    StubEffect &child = scene.add(1, fixed(begin), fixed(0)).with("endfixedtime", duration);
    scene.pass();
    QTEST(child.text("end"), "end");
    QCOMPARE(child.text("endfixedtime"), duration);
}

void tst_TimeResolver::endTypeTells_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("end");
    const QString stays = " +0777";
    QTest::newRow("0: fixed duration") << "0" << "150";
    QTest::newRow("1: linked") << "1" << "1010";
    QTest::newRow("2: cycles") << "2" << "4600";
    QTest::newRow("3: none") << "3" << stays;
    QTest::newRow("5: none") << "5" << stays;
    QTest::newRow("the largest: none") << "4294967295" << stays;
    QTest::newRow("no number: fixed duration") << "cycles" << "150";
    QTest::newRow("empty: fixed duration") << "" << "150";
}

void tst_TimeResolver::endTypeTells()
{
    QFETCH(const QString, type);
    ResolverScene scene;
    scene.add(1, fixed(1000), fixed(500));
    StubEffect &child = scene.add(2, fixed(100), toStartOf(1, 10))
                            .with("endfixedtime", 50)
                            .with("endcyclecount", 3)
                            .with("end", QStringLiteral(" +0777"))
                            .with("endtype", type);
    child.cycleTime = 1500;
    scene.pass();
    QTEST(child.text("end"), "end");
    QCOMPARE(child.text("endtype"), type);
}

void tst_TimeResolver::cyclesAreCountedFromBegin_data()
{
    QTest::addColumn<quint32>("begin");
    QTest::addColumn<quint32>("cycle");
    QTest::addColumn<QString>("count");
    QTest::addColumn<QString>("end");
    const quint32 largest = 4294967295;
    QTest::newRow("three") << 1000u << 1500u << "3" << "5500";
    QTest::newRow("none") << 1000u << 1500u << "0" << "1000";
    QTest::newRow("of no length") << 1000u << 0u << "3" << "1000";
    QTest::newRow("of no length, many") << 1000u << 0u << "4294967295" << "1000";
    QTest::newRow("missing count") << 1000u << 1500u << QString() << "1000";
    QTest::newRow("count no number") << 1000u << 1500u << "two" << "1000";
    QTest::newRow("below the largest") << 0u << 65536u << "65535" << "4294901760";
    QTest::newRow("exactly the largest") << 0u << 65537u << "65535" << "4294967295";
    QTest::newRow("beyond the largest") << 0u << 65536u << "65536" << "4294967295";
    QTest::newRow("far beyond") << 0u << largest << "4294967295" << "4294967295";
    QTest::newRow("the sum wraps") << 1u << 65536u << "65536" << "0";
    QTest::newRow("the sum wraps, not saturated") << 4294967000u << 100u << "3" << "4";
}

void tst_TimeResolver::cyclesAreCountedFromBegin()
{
    QFETCH(const quint32, begin);
    QFETCH(const quint32, cycle);
    QFETCH(const QString, count);
    ResolverScene scene;
    StubEffect &child = scene.add(1, fixed(begin), ofCode("2"));
    child.cycleTime = cycle;
    if (!count.isNull())
        child.with("endcyclecount", count);
    scene.pass();
    QTEST(child.text("end"), "end");
}

void tst_TimeResolver::theEndCountsFromTheBeginOfThisPass()
{
    ResolverScene scene;
    scene.add(1, fixed(100), fixed(10)).with("begin", 7);
    scene.add(2, fixed(200), cycles(1)).with("begin", 7);
    scene.add(3, ofCode("3"), fixed(10)).with("begin", 7);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 110", "2: 200 - 1200", "3: 7 - 17"}));
}

// --- Marks ---

void tst_TimeResolver::aPassEmptiesTheDictionaryAndEntersEveryChild()
{
    ResolverScene scene;
    StubEffect &one = scene.add(1, fixed(100));
    StubEffect &two = scene.add(2, toEndOf(1));
    scene.dictionary.insert(1, &two);
    scene.dictionary.insert(77, &two);
    scene.pass();
    QCOMPARE(one.text("begin"), "100");
    QCOMPARE(scene.dictionary, (meta::ChildrenByEid{{1, &one}, {2, &two}}));
}

void tst_TimeResolver::resolvingOneChildResolvesItsTargetsToo()
{
    ResolverScene scene;
    StubEffect &one = scene.add(1, fixed(100), fixed(10));
    StubEffect &two = scene.add(2, toEndOf(1, 5), fixed(10));
    scene.add(3, toEndOf(2, 5), fixed(10));
    const QStringList transcript{
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
        "  updateEffectTime() EID: 1",
    };
    QCOMPARE(scene.resolve(&two), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 110", "2: 115 - 125", "3: 0 - 0"}));
    QCOMPARE(scene.dictionary, (meta::ChildrenByEid{{1, &one}, {2, &two}}));
}

void tst_TimeResolver::resolvingAMarkedChildDoesNothing()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, fixed(100), toEndOf(9));
    scene.dictionary.insert(1, nullptr);
    QCOMPARE(scene.resolve(&child), QStringList());
    QCOMPARE(child.changes, QStringList());
    QCOMPARE(child.text("endtype"), "1");

    scene.dictionary.clear();
    QCOMPARE(scene.resolve(&child).size(), 2);
    QCOMPARE(scene.resolve(&child), QStringList());
}

void tst_TimeResolver::aMarkedTargetGivesTheTimeThatItHolds()
{
    ResolverScene scene;
    scene.add(1, fixed(100), fixed(10)).with("begin", 7);
    StubEffect &child = scene.add(2, toStartOf(1, 5), fixed(10));
    scene.dictionary.insert(1, &scene.at(0));
    const QStringList transcript{
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
    };
    QCOMPARE(scene.resolve(&child), transcript);
    QCOMPARE(child.text("begin"), "12");
}

void tst_TimeResolver::resolvingNullDoesNothing()
{
    ResolverScene scene;
    StubEffect &child = scene.add(0, fixed(100));
    QCOMPARE(scene.resolve(nullptr), QStringList());
    QCOMPARE(child.changes, QStringList());
    QVERIFY(scene.dictionary.isEmpty());
}

// --- Quiet ---

void tst_TimeResolver::aPassThatMovesNothingNotifiesNobody()
{
    ResolverScene scene;
    scene.add(2, toEndOf(1, 0.5), cycles(2));
    scene.add(1, fixed(100), fixed(10));
    scene.pass();
    QCOMPARE(scene.at(0).changes, (QStringList{"begin=110", "end=2110"}));
    QCOMPARE(scene.at(1).changes, (QStringList{"begin=100", "end=110"}));
    scene.pass();
    QCOMPARE(scene.at(0).changes.size(), 2);
    QCOMPARE(scene.at(1).changes.size(), 2);
}

void tst_TimeResolver::withoutTheDebugChannelNothingIsWritten()
{
    ResolverScene scene;
    scene.add(2, toEndOf(1, 500), toStartOf(9));
    scene.add(1, fixed(2000), fixed(3000));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    QCOMPARE(scene.pass(), QStringList());
    QCOMPARE(scene.times(), (QStringList{"2: 5500 - 5500", "1: 2000 - 5000"}));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    QCOMPARE(scene.pass().size(), 6);
}

QTEST_GUILESS_MAIN(tst_TimeResolver)

#include "tst_TimeResolver.moc"
