#include "EndSignals.h"
#include "LogCapture.h"
#include "MetaStage.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <optional>

namespace {

QString times(const Effect *effect)
{
    return effect->getPropertyString(QStringLiteral("begin")) + QStringLiteral("..")
           + effect->getPropertyString(QStringLiteral("end"));
}

} // namespace

class tst_MetaEffectTimes : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_debugLines.reset(); }

    void passResolvesLinksWhateverTheOrder();
    void passWithoutEditorLeavesTheOwnEnd();
    void oneChildIsResolvedOnceAPass();
    void resolvingNullDoesNothing();

    void newCycleTimeOfAChildResolvesAllChildren();
    void newCycleTimeIsAskedForNotTakenFromTheSignal();
    void newCycleTimeOfANestedEffectResolvesItsSiblings();
    void newCycleTimeOfADistantEffectStaysThere();

    void endTimeIsTheLatestEnd_data();
    void endTimeIsTheLatestEnd();
    void newEndTimeIsAnnouncedFirstAsEndThenAsCycleTime();
    void newEndTimeIsInPlaceWhenItIsAnnounced();
    void endTimeLeavesTheBegin();
    void newEndTimeReachesTheParent();

private:
    std::optional<LogCapture> m_debugLines;
};

void tst_MetaEffectTimes::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    m_debugLines.emplace(QtDebugMsg);
}

// --- Passes ---

void tst_MetaEffectTimes::passResolvesLinksWhateverTheOrder()
{
    MetaStage stage;
    StubEffect *b = stage.add(2);
    StubEffect *a = stage.add(1);
    a->with("starttype", 0)
        .with("startfixedtime", 2000)
        .with("endtype", 0)
        .with("endfixedtime", 3000);
    b->with("starttype", 1).with("startlinkeid", 1).with("startlinkstart", 0);
    b->with("startlinkoffset", 500);
    b->with("endtype", 1)
        .with("endlinkeid", 1)
        .with("endlinkstart", 1)
        .with("endlinkoffset", 10000);

    stage.effect.updateEffectTimes();

    QCOMPARE(times(a), QStringLiteral("2000..5000"));
    QCOMPARE(times(b), QStringLiteral("5500..12000"));
    QCOMPARE(
        m_debugLines->lines(),
        QStringList({"MetaEffect::updateEffectTimes()", "    Next Effect",
                     "  updateEffectTime() EID: 2", "  updateEffectTime() 2 START calling EID: 1",
                     "  updateEffectTime() EID: 1", "  updateEffectTime() 2 END calling EID: 1",
                     "    Next Effect"}));
}

void tst_MetaEffectTimes::passWithoutEditorLeavesTheOwnEnd()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("endtype", 0).with("endfixedtime", 3000);
    stage.effect.with("end", 700);
    const EndSignals endSignals(stage.effect);

    stage.effect.updateEffectTimes();

    QCOMPARE(times(child), QStringLiteral("0..3000"));
    QCOMPARE(stage.effect.text("end"), QStringLiteral("700"));
    QCOMPARE(endSignals.noted, QStringList());
}

void tst_MetaEffectTimes::oneChildIsResolvedOnceAPass()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    stage.effect.updateEffectTimes();
    child->with("startfixedtime", 400);

    stage.effect.updateEffectTime(child);
    QCOMPARE(times(child), QStringLiteral("0..0"));

    stage.effect.updateEffectTimes();
    QCOMPARE(times(child), QStringLiteral("400..400"));
}

void tst_MetaEffectTimes::resolvingNullDoesNothing()
{
    MetaStage stage;
    StubEffect *child = stage.add(0);
    child->with("startfixedtime", 400);
    child->changes.clear();

    stage.effect.updateEffectTime(nullptr);

    QCOMPARE(child->changes, QStringList());
    QCOMPARE(m_debugLines->lines(), QStringList());
}

// --- New cycle times ---

void tst_MetaEffectTimes::newCycleTimeOfAChildResolvesAllChildren()
{
    MetaStage stage;
    StubEffect *follower = stage.add(2);
    StubEffect *child = stage.add(1);
    child->with("startfixedtime", 1000).with("endtype", 2).with("endcyclecount", 3);
    follower->with("starttype", 1)
        .with("startlinkeid", 1)
        .with("endtype", 0)
        .with("endfixedtime", 10);

    child->setCycleTime(1500);
    QCOMPARE(times(child), QStringLiteral("1000..5500"));
    QCOMPARE(times(follower), QStringLiteral("5500..5510"));

    child->setCycleTime(100);
    QCOMPARE(times(child), QStringLiteral("1000..1300"));
    QCOMPARE(times(follower), QStringLiteral("1300..1310"));
}

void tst_MetaEffectTimes::newCycleTimeIsAskedForNotTakenFromTheSignal()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("endtype", 2).with("endcyclecount", 2);
    child->cycleTime = 300;

    stage.effect.handleCycleTimeChanged(999999);

    QCOMPARE(times(child), QStringLiteral("0..600"));
}

void tst_MetaEffectTimes::newCycleTimeOfANestedEffectResolvesItsSiblings()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->with("endtype", 2).with("endcyclecount", 2);
    StubEffect *follower = stage.add(2);
    follower->with("starttype", 1).with("startlinkeid", 1).with("endtype", 0);
    StubEffect *grandchild = stage.addTo(*nested, 1);
    grandchild->with("end", 700);

    nested->updateEndTime();

    QCOMPARE(times(nested), QStringLiteral("0..1400"));
    QCOMPARE(times(follower), QStringLiteral("1400..1400"));
}

void tst_MetaEffectTimes::newCycleTimeOfADistantEffectStaysThere()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    nested->with("endtype", 2).with("endcyclecount", 1).with("end", 50);
    StubEffect *grandchild = stage.addTo(*nested, 1);
    grandchild->with("endtype", 2).with("endcyclecount", 1);

    // The nested effect has no editor: its own end stays, so its parent hears nothing.
    grandchild->setCycleTime(900);

    QCOMPARE(times(grandchild), QStringLiteral("0..900"));
    QCOMPARE(times(nested), QStringLiteral("0..50"));
    QCOMPARE(m_debugLines->lines().count(QStringLiteral("MetaEffect::updateEffectTimes()")), 1);
}

// --- The own end ---

void tst_MetaEffectTimes::endTimeIsTheLatestEnd_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QStringList>("ends");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("announced");

    QTest::newRow("raised") << "100" << QStringList({"200", "300", "250"}) << "300" << true;
    QTest::newRow("lowered") << "1000" << QStringList({"200", "300"}) << "300" << true;
    QTest::newRow("equal") << "300" << QStringList({"200", "300"}) << "300" << false;
    QTest::newRow("equal number in another form")
        << "0300" << QStringList({"300"}) << "300" << false;
    QTest::newRow("no children") << "300" << QStringList() << "0" << true;
    QTest::newRow("no children, already 0") << "0" << QStringList() << "0" << false;
    QTest::newRow("own text that is no time") << "soon" << QStringList() << "0" << false;
    QTest::newRow("numbers, not texts") << "0" << QStringList({"9", "10"}) << "10" << true;
    QTest::newRow("texts that are no times")
        << "0" << QStringList({"abc", "20", "-30", "", "40.5"}) << "20" << true;
    QTest::newRow("only texts that are no times")
        << "7" << QStringList({"abc", "-1"}) << "0" << true;
    QTest::newRow("beyond 2^31") << "0" << QStringList({"2147483647", "4294967295"}) << "4294967295"
                                 << true;
}

void tst_MetaEffectTimes::endTimeIsTheLatestEnd()
{
    QFETCH(QString, own);
    QFETCH(QStringList, ends);
    QFETCH(QString, expected);
    QFETCH(bool, announced);
    MetaStage stage;
    for (const QString &end : ends)
        stage.add(0)->with("end", end);
    stage.effect.with("end", own);
    const QSignalSpy endSpy(&stage.effect, SIGNAL(endTimeChanged(unsigned long)));
    const QSignalSpy cycleSpy(&stage.effect, SIGNAL(cycleTimeChanged(unsigned long)));

    stage.effect.updateEndTime();

    QCOMPARE(stage.effect.text("end"), expected);
    QCOMPARE(endSpy.count(), announced ? 1 : 0);
    QCOMPARE(cycleSpy.count(), announced ? 1 : 0);

    stage.effect.updateEndTime();
    QCOMPARE(endSpy.count(), announced ? 1 : 0);
}

void tst_MetaEffectTimes::newEndTimeIsAnnouncedFirstAsEndThenAsCycleTime()
{
    MetaStage stage;
    StubEffect *child = stage.add(1);
    child->with("end", 1300);
    stage.effect.with("begin", 700);
    const EndSignals endSignals(stage.effect);

    stage.effect.updateEndTime();
    QCOMPARE(endSignals.noted, QStringList({"end 1300", "cycle 600"}));

    child->with("end", 500);
    stage.effect.updateEndTime();
    QCOMPARE(endSignals.noted.mid(2), QStringList({"end 500", "cycle 4294967096"}));
}

void tst_MetaEffectTimes::newEndTimeIsInPlaceWhenItIsAnnounced()
{
    MetaStage stage;
    stage.add(1)->with("end", 1300);
    QString seen;
    connect(&stage.effect, &MetaEffect::endTimeChanged, this,
            [&] { seen = stage.effect.text("end"); });

    stage.effect.updateEndTime();

    QCOMPARE(seen, QStringLiteral("1300"));
}

void tst_MetaEffectTimes::endTimeLeavesTheBegin()
{
    MetaStage stage;
    stage.add(1)->with("end", 1300);
    stage.effect.with("begin", 700);

    stage.effect.updateEndTime();

    QCOMPARE(times(&stage.effect), QStringLiteral("700..1300"));
    QVERIFY(!stage.effect.ownDirty());
}

void tst_MetaEffectTimes::newEndTimeReachesTheParent()
{
    MetaStage stage;
    OpenMetaEffect *nested = stage.addNestedTo(stage.effect, 1);
    stage.addTo(*nested, 1)->with("end", 700);
    nested->with("startfixedtime", 100).with("endtype", 2).with("endcyclecount", 2);
    bool parentWasFirst = true;
    connect(nested, &MetaEffect::endTimeChanged, this,
            [&] { parentWasFirst = nested->text("begin") == QStringLiteral("100"); });

    nested->updateEndTime();

    QVERIFY(!parentWasFirst);
    // The parent moves the begin first, so a cycle lasts from there to the nested effect's own end.
    QCOMPARE(times(nested), QStringLiteral("100..1300"));
}

QTEST_GUILESS_MAIN(tst_MetaEffectTimes)
#include "tst_MetaEffectTimes.moc"
