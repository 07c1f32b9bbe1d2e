#include "ResolverScene.h"
#include "SmallStack.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTest>

#include <functional>

namespace {

/// Does something whenever a property of its changes.
class Restless : public StubEffect
{
public:
    using StubEffect::StubEffect;
    void internalSetProperty(const QString &key, const QString &value) override
    {
        StubEffect::internalSetProperty(key, value);
        if (onChange)
            onChange(key);
    }
    std::function<void(const QString &key)> onChange;
};

/// The next warning must name this child; any further one fails the test.
void expectLoopAt(quint32 eid)
{
    const QString warning = "MetaEffect: the links of the child with EID %1 form a loop";
    QTest::ignoreMessage(QtWarningMsg, qPrintable(warning.arg(eid)));
}

constexpr int chainLength = 100000;

} // namespace

class tst_TimeResolverLoops : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aStartLinkedToItselfMovesByItsOffsetOnce();
    void aStartLinkedToTheOwnEndTakesTheEndThatItHolds();
    void anEndLinkedToTheOwnStartTakesTheNewBegin();
    void anEndLinkedToItselfMovesByItsOffsetOnce();
    void twoStartsLinkedToEachOther();
    void aStartAndAnEndLinkedToEachOther();
    void threeInARing();
    void theTargetOfALoopIsEnteredFromOutside();
    void aBrokenLinkInsideALoopIsRepaired();
    void aBrokenStartBesideAnEndLinkedToItself();
    void ofSeveralLoopsOnlyTheFirstIsReported();
    void everyPassReportsItsLoop();
    void resolvingOneChildReportsItsLoop();
    void aLoopIsReportedWithoutTheDebugChannel();
    void childrenBesideALoopAreResolvedAsEver();
    void severalRoadsToOneChildAreNoLoop();

    void aChildMayStartAPassFromWithinAPass();
    void aNewCycleTimeWithinAPassCountsAtOnce();
    void aChildMayResolveItselfFromWithinAPass();
    void aChildMayEmptyTheDictionaryFromWithinAPass();
    void aLoopThatStirsItselfEnds_data();
    void aLoopThatStirsItselfEnds();
    void aLoopWithinAPassWithinAPassIsReportedByBoth();

    void aLongChainOfStartsNeedsNoStack();
    void aLongChainOfEndsNeedsNoStack();
    void aLongChainOfBrokenAndSoundLinksNeedsNoStack();
    void aLongLoopNeedsNoStack();
};

void tst_TimeResolverLoops::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
}

void tst_TimeResolverLoops::cleanup()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
}

// --- Shapes of loops ---

void tst_TimeResolverLoops::aStartLinkedToItselfMovesByItsOffsetOnce()
{
    ResolverScene scene;
    scene.add(1, toStartOf(1, 10), fixed(5)).with("begin", 100);
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), QStringList{"1: 110 - 115"});
}

void tst_TimeResolverLoops::aStartLinkedToTheOwnEndTakesTheEndThatItHolds()
{
    ResolverScene scene;
    scene.add(1, toEndOf(1, 10), fixed(5)).with("end", 100);
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times(), QStringList{"1: 110 - 115"});
}

void tst_TimeResolverLoops::anEndLinkedToTheOwnStartTakesTheNewBegin()
{
    ResolverScene scene;
    scene.add(1, fixed(300), toStartOf(1, 50)).with("begin", 100);
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 END calling EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), QStringList{"1: 300 - 350"});
}

void tst_TimeResolverLoops::anEndLinkedToItselfMovesByItsOffsetOnce()
{
    ResolverScene scene;
    scene.add(1, fixed(300), toEndOf(1, -30)).with("end", 100);
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times(), QStringList{"1: 300 - 70"});
}

void tst_TimeResolverLoops::twoStartsLinkedToEachOther()
{
    ResolverScene scene;
    scene.add(1, toStartOf(2, 10), fixed(5)).with("begin", 1000);
    scene.add(2, toStartOf(1, 20), fixed(5)).with("begin", 7000);
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 1030 - 1035", "2: 1020 - 1025"}));
}

void tst_TimeResolverLoops::aStartAndAnEndLinkedToEachOther()
{
    ResolverScene scene;
    scene.add(1, toEndOf(2, 10), fixed(5)).with("begin", 1000);
    scene.add(2, fixed(60), toStartOf(1, 20));
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 1030 - 1035", "2: 60 - 1020"}));
}

void tst_TimeResolverLoops::threeInARing()
{
    ResolverScene scene;
    scene.add(1, toStartOf(2, 1), fixed(5)).with("begin", 1000);
    scene.add(2, toStartOf(3, 2), fixed(5));
    scene.add(3, toStartOf(1, 4), fixed(5));
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 3",
        "  updateEffectTime() EID: 3",
        "  updateEffectTime() 3 START calling EID: 1",
        "    Next Effect",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 1007 - 1012", "2: 1006 - 1011", "3: 1004 - 1009"}));
}

void tst_TimeResolverLoops::theTargetOfALoopIsEnteredFromOutside()
{
    ResolverScene scene;
    scene.add(9, toStartOf(2, 1), fixed(5));
    scene.add(1, toStartOf(2, 10), fixed(5));
    scene.add(2, toStartOf(1, 20), fixed(5)).with("begin", 500);
    expectLoopAt(2);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"9: 531 - 536", "1: 510 - 515", "2: 530 - 535"}));
}

void tst_TimeResolverLoops::aBrokenLinkInsideALoopIsRepaired()
{
    ResolverScene scene;
    scene.add(1, toStartOf(2, 10), fixed(5)).with("begin", 1000);
    StubEffect &two = scene.add(2, toStartOf(77, 20), toStartOf(1, 30)).with("begin", 600);
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 END calling EID: 1",
        "  updateEffectTime() 2 END calling EID: 1",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(two.text("starttype"), "0");
    QCOMPARE(scene.times(), (QStringList{"1: 10 - 15", "2: 0 - 1030"}));
}

void tst_TimeResolverLoops::aBrokenStartBesideAnEndLinkedToItself()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, toStartOf(77), toEndOf(1, 10)).with("end", 100);
    expectLoopAt(1);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 END calling EID: 1",
        "  updateEffectTime() 1 END calling EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.text("starttype"), "0");
    QCOMPARE(scene.times(), QStringList{"1: 0 - 120"});
}

void tst_TimeResolverLoops::ofSeveralLoopsOnlyTheFirstIsReported()
{
    ResolverScene scene;
    scene.add(5, toEndOf(5));
    scene.add(6, toStartOf(7), toStartOf(6));
    scene.add(7, toStartOf(6));
    expectLoopAt(5);
    scene.pass();
    QCOMPARE(scene.dictionary.size(), 3);
}

void tst_TimeResolverLoops::everyPassReportsItsLoop()
{
    ResolverScene scene;
    scene.add(1, toStartOf(1, 10), fixed(5));
    for (int pass = 1; pass <= 3; ++pass) {
        expectLoopAt(1);
        scene.pass();
        QCOMPARE(scene.at(0).text("begin"), QString::number(10 * pass));
    }
    // Without the loop the resolver is as good as new.
    scene.at(0).with("starttype", 0);
    QCOMPARE(scene.pass().size(), 3);
    QCOMPARE(scene.times(), QStringList{"1: 0 - 5"});
}

void tst_TimeResolverLoops::resolvingOneChildReportsItsLoop()
{
    ResolverScene scene;
    StubEffect &one = scene.add(1, toStartOf(2, 10), fixed(5));
    scene.add(2, toStartOf(1, 20), fixed(5));
    expectLoopAt(1);
    scene.resolver.resolve(&one);
    QCOMPARE(scene.times(), (QStringList{"1: 30 - 35", "2: 20 - 25"}));
    scene.resolver.resolve(&one); // marked now, so nothing is followed
    scene.dictionary.clear();
    expectLoopAt(1);
    scene.resolver.resolve(&one);
}

void tst_TimeResolverLoops::aLoopIsReportedWithoutTheDebugChannel()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    ResolverScene scene;
    scene.add(4294967295, toStartOf(4294967295));
    expectLoopAt(4294967295);
    QCOMPARE(scene.pass(), QStringList());
}

void tst_TimeResolverLoops::childrenBesideALoopAreResolvedAsEver()
{
    ResolverScene scene;
    scene.add(4, toEndOf(3, 500), toStartOf(3, 10000));
    scene.add(1, toStartOf(2), fixed(5));
    scene.add(2, toStartOf(1), fixed(5));
    scene.add(3, fixed(2000), fixed(3000));
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times().first(), "4: 5500 - 12000");
    QCOMPARE(scene.times().last(), "3: 2000 - 5000");
}

void tst_TimeResolverLoops::severalRoadsToOneChildAreNoLoop()
{
    ResolverScene scene;
    scene.add(1, toStartOf(2, 1), toEndOf(3, 1));
    scene.add(2, toStartOf(4, 1), toStartOf(4, 2));
    scene.add(3, toStartOf(2, 1), toEndOf(4, 1));
    scene.add(4, fixed(100), fixed(10));
    scene.pass();
    QCOMPARE(scene.times(),
             (QStringList{"1: 102 - 112", "2: 101 - 102", "3: 102 - 111", "4: 100 - 110"}));
}

// --- Passes within a pass ---

void tst_TimeResolverLoops::aChildMayStartAPassFromWithinAPass()
{
    ResolverScene scene;
    auto *restless = new Restless(nullptr, 1);
    restless->with("startfixedtime", 100).with("endfixedtime", 10);
    restless->onChange = [&](const QString &key) {
        if (key == u"begin")
            scene.resolver.resolveAll();
    };
    scene.roster.insert(restless);
    scene.add(2, toEndOf(1, 5), fixed(10));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "    Next Effect",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 110", "2: 115 - 125"}));
    QCOMPARE(scene.dictionary.size(), 2);
}

void tst_TimeResolverLoops::aNewCycleTimeWithinAPassCountsAtOnce()
{
    ResolverScene scene;
    auto *restless = new Restless(nullptr, 2);
    restless->with("starttype", 1).with("startlinkeid", 1).with("endtype", 2);
    restless->with("endcyclecount", 2);
    restless->onChange = [&](const QString &key) {
        if (key == u"begin")
            restless->setCycleTime(restless->beginTime() / 10);
    };
    connect(restless, &Effect::cycleTimeChanged, this, [&] { scene.resolver.resolveAll(); });
    scene.roster.insert(restless);
    scene.add(3, toEndOf(2, 5), fixed(10));
    scene.add(1, fixed(100), fixed(300));
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"2: 400 - 480", "3: 485 - 495", "1: 100 - 400"}));
    scene.at(2).with("endfixedtime", 100);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"2: 200 - 240", "3: 245 - 255", "1: 100 - 200"}));
}

void tst_TimeResolverLoops::aChildMayResolveItselfFromWithinAPass()
{
    ResolverScene scene;
    auto *restless = new Restless(nullptr, 1);
    restless->with("startfixedtime", 100).with("endfixedtime", 10);
    restless->onChange = [&](const QString &) { scene.resolver.resolve(restless); };
    scene.roster.insert(restless);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), QStringList{"1: 100 - 110"});
}

// As filling a chooser of link targets does. What was resolved before is then resolved again.
void tst_TimeResolverLoops::aChildMayEmptyTheDictionaryFromWithinAPass()
{
    ResolverScene scene;
    scene.add(1, fixed(100), toStartOf(9));
    auto *restless = new Restless(nullptr, 2);
    restless->with("startfixedtime", 7);
    restless->onChange = [&](const QString &key) {
        if (key == u"begin")
            scene.dictionary.clear();
    };
    scene.roster.insert(restless);
    scene.add(3, toStartOf(1, 5));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "    Next Effect",
        "  updateEffectTime() EID: 2",
        "    Next Effect",
        "  updateEffectTime() EID: 3",
        "  updateEffectTime() 3 START calling EID: 1",
        "  updateEffectTime() EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 100", "2: 7 - 7", "3: 105 - 105"}));
}

void tst_TimeResolverLoops::aLoopThatStirsItselfEnds_data()
{
    QTest::addColumn<bool>("wholePass");
    QTest::newRow("by whole passes") << true;
    QTest::newRow("child by child") << false;
}

// Each pass moves the children of the loop on, and each move asks for another pass.
void tst_TimeResolverLoops::aLoopThatStirsItselfEnds()
{
    QFETCH(const bool, wholePass);
    ResolverScene scene;
    for (const quint32 eid : {1u, 2u}) {
        auto *restless = new Restless(nullptr, eid);
        restless->with("starttype", 1).with("startlinkeid", 3 - eid).with("startlinkstart", 1);
        restless->with("startlinkoffset", 10);
        restless->onChange = [&scene, restless, wholePass](const QString &) {
            if (wholePass)
                scene.resolver.resolveAll();
            else
                scene.resolver.resolve(restless);
        };
        scene.roster.insert(restless);
    }
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 20 - 20", "2: 10 - 10"}));
    expectLoopAt(1);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 40 - 40", "2: 30 - 30"}));
}

void tst_TimeResolverLoops::aLoopWithinAPassWithinAPassIsReportedByBoth()
{
    ResolverScene scene;
    auto *restless = new Restless(nullptr, 1);
    restless->with("startfixedtime", 100);
    restless->onChange = [&](const QString &key) {
        if (key == u"begin")
            scene.resolver.resolveAll();
    };
    scene.roster.insert(restless);
    scene.add(2, toStartOf(2, 10));
    expectLoopAt(2); // the inner pass resolves everything, so the outer meets no loop
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 100", "2: 10 - 10"}));
    QCOMPARE(scene.dictionary.size(), 2);
}

// --- Depth ---

void tst_TimeResolverLoops::aLongChainOfStartsNeedsNoStack()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    ResolverScene scene;
    for (quint32 eid = chainLength; eid > 1; --eid)
        scene.add(eid, toEndOf(eid - 1, 1), fixed(10));
    scene.add(1, fixed(100), fixed(10));
    runOnSmallStack([&scene] { scene.resolver.resolveAll(); });
    for (int i = 0; i < chainLength; ++i)
        QCOMPARE(scene.at(i).beginTime(), 100u + 11u * static_cast<quint32>(chainLength - 1 - i));
}

void tst_TimeResolverLoops::aLongChainOfEndsNeedsNoStack()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    ResolverScene scene;
    for (quint32 eid = chainLength; eid > 1; --eid)
        scene.add(eid, fixed(eid), toEndOf(eid - 1, 2));
    scene.add(1, fixed(100), fixed(10));
    runOnSmallStack([&scene] { scene.resolver.resolve(&scene.at(0)); });
    for (int i = 0; i < chainLength; ++i)
        QCOMPARE(scene.at(i).endTime(), 110u + 2u * static_cast<quint32>(chainLength - 1 - i));
}

// Every start is broken, so every child is entered twice before its end leads on.
void tst_TimeResolverLoops::aLongChainOfBrokenAndSoundLinksNeedsNoStack()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    ResolverScene scene;
    for (quint32 eid = chainLength; eid > 1; --eid)
        scene.add(eid, toStartOf(0), toEndOf(eid - 1, 2));
    scene.add(1, fixed(100), toEndOf(0));
    runOnSmallStack([&scene] { scene.resolver.resolveAll(); });
    for (int i = 0; i < chainLength - 1; ++i) {
        QCOMPARE(scene.at(i).text("starttype"), "0");
        QCOMPARE(scene.at(i).endTime(), 100u + 2u * static_cast<quint32>(chainLength - 1 - i));
    }
}

void tst_TimeResolverLoops::aLongLoopNeedsNoStack()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    ResolverScene scene;
    for (quint32 eid = chainLength; eid > 0; --eid)
        scene.add(eid, toStartOf(eid > 1 ? eid - 1 : quint32{chainLength}, 1));
    expectLoopAt(chainLength);
    runOnSmallStack([&scene] { scene.resolver.resolveAll(); });
    QCOMPARE(scene.at(0).beginTime(), quint32{chainLength});
    QCOMPARE(scene.at(chainLength - 1).beginTime(), 1u);
}

QTEST_GUILESS_MAIN(tst_TimeResolverLoops)

#include "tst_TimeResolverLoops.moc"
