#include "ResolverScene.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

namespace {

/// Counts how often its cycle time is asked for.
class CountedCycle : public StubEffect
{
public:
    using StubEffect::StubEffect;
    unsigned long getCycleTime() override
    {
        ++questions;
        return cycleTime;
    }
    int questions = 0;
};

} // namespace

class tst_TimeResolverLinks : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aTargetIsResolvedBeforeTheChildThatIsListedBeforeIt();
    void everyListOrderOfAChainGivesTheSameTimes();
    void aPassOverNoChildrenWritesItsHeadlineOnly();
    void eidsAreWrittenInDecimal();

    void aChildWithoutAnyRuleStartsAndEndsAtZero();
    void aMissingLinkEidLinksToTheChildOfEidZero();
    void aMissingLinkEidIsBrokenWithoutAChildOfEidZero();
    void aChildWithoutAnEidHasEidZero();

    void brokenStartLinkBecomesFixedAtZero();
    void theEndRuleIsEvaluatedAgainAfterABrokenStartLink();
    void theEndLinkIsFollowedAgainAfterABrokenStartLink();
    void brokenEndLinkBecomesADurationOfZero();
    void theStartLinkIsFollowedAgainAfterABrokenEndLink();
    void bothLinksBrokenAreRepairedInOneGo();
    void aRepairedRuleStaysFixed();
    void aLinkOfAnotherCodeIsNotRepaired();

    void ofSeveralChildrenOfOneEidOnlyTheFirstIsResolved();
    void aLinkFindsTheFirstChildOfItsEid();
};

void tst_TimeResolverLinks::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
}

// --- Order ---

void tst_TimeResolverLinks::aTargetIsResolvedBeforeTheChildThatIsListedBeforeIt()
{
    ResolverScene scene;
    scene.add(2, toEndOf(1, 500), toStartOf(1, 10000));
    scene.add(1, fixed(2000), fixed(3000));

    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 2 END calling EID: 1",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"2: 5500 - 12000", "1: 2000 - 5000"}));
}

void tst_TimeResolverLinks::everyListOrderOfAChainGivesTheSameTimes()
{
    QList<quint32> order{1, 2, 3, 4, 5};
    int orders = 0;
    do {
        ResolverScene scene;
        for (const quint32 eid : order)
            scene.add(eid, eid == 1 ? fixed(100) : toEndOf(eid - 1, 1), fixed(10));
        scene.pass();
        QStringList times = scene.times();
        times.sort();
        QCOMPARE(times, (QStringList{"1: 100 - 110", "2: 111 - 121", "3: 122 - 132", "4: 133 - 143",
                                     "5: 144 - 154"}));
        ++orders;
    } while (std::next_permutation(order.begin(), order.end()));
    QCOMPARE(orders, 120);
}

void tst_TimeResolverLinks::aPassOverNoChildrenWritesItsHeadlineOnly()
{
    ResolverScene scene;
    QCOMPARE(scene.pass(), QStringList{"MetaEffect::updateEffectTimes()"});
}

void tst_TimeResolverLinks::eidsAreWrittenInDecimal()
{
    ResolverScene scene;
    scene.add(4294967295, toStartOf(3000000000));
    scene.add(3000000000);

    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 4294967295",
        "  updateEffectTime() 4294967295 START calling EID: 3000000000",
        "  updateEffectTime() EID: 3000000000",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
}

// --- What is missing ---

void tst_TimeResolverLinks::aChildWithoutAnyRuleStartsAndEndsAtZero()
{
    ResolverScene scene;
    scene.add(1).with("begin", 7).with("end", 8);
    scene.add(2).with("startfixedtime", 30).with("endfixedtime", 4);
    scene.pass();
    QCOMPARE(scene.times(), (QStringList{"1: 0 - 0", "2: 30 - 34"}));
}

void tst_TimeResolverLinks::aMissingLinkEidLinksToTheChildOfEidZero()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, ofCode("1"), ofCode("1"));
    scene.add(0, fixed(300), fixed(20));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 0",
        "  updateEffectTime() EID: 0",
        "  updateEffectTime() 1 END calling EID: 0",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 320 - 320", "0: 300 - 320"}));
    QCOMPARE(child.text("starttype"), "1");
}

void tst_TimeResolverLinks::aMissingLinkEidIsBrokenWithoutAChildOfEidZero()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, ofCode("1")).with("begin", 7);
    scene.pass();
    QCOMPARE(child.text("starttype"), "0");
    QCOMPARE(child.text("begin"), "0");
}

void tst_TimeResolverLinks::aChildWithoutAnEidHasEidZero()
{
    ResolverScene scene;
    auto *bare = new Effect(nullptr, 0);
    bare->setProperty("startfixedtime", "40");
    scene.roster.insert(bare);
    StubEffect &child = scene.add(1, toStartOf(0, 2));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()", "    Next Effect",
        "  updateEffectTime() EID: 0",     "    Next Effect",
        "  updateEffectTime() EID: 1",     "  updateEffectTime() 1 START calling EID: 0",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.text("begin"), "42");
}

// --- Broken links ---

void tst_TimeResolverLinks::brokenStartLinkBecomesFixedAtZero()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, toEndOf(9, 500), fixed(20)).with("startfixedtime", 70);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.text("starttype"), "0");
    QCOMPARE(child.text("startfixedtime"), "0");
    QCOMPARE(child.text("begin"), "0");
    QCOMPARE(child.text("end"), "20");
    QCOMPARE(child.text("startlinkeid"), "9");
    QCOMPARE(child.text("startlinkoffset"), "500");
}

void tst_TimeResolverLinks::theEndRuleIsEvaluatedAgainAfterABrokenStartLink()
{
    ResolverScene scene;
    auto *child = new CountedCycle(nullptr, 1);
    child->with("starttype", 1).with("startlinkeid", 9).with("endtype", 2).with("endcyclecount", 2);
    scene.roster.insert(child);
    scene.pass();
    QCOMPARE(child->questions, 2);
    QCOMPARE(child->text("end"), "2000");
    scene.pass();
    QCOMPARE(child->questions, 3);
}

void tst_TimeResolverLinks::theEndLinkIsFollowedAgainAfterABrokenStartLink()
{
    ResolverScene scene;
    scene.add(1, toEndOf(9, 500), toEndOf(2, 5));
    scene.add(2, fixed(100), fixed(10));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 END calling EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 1 END calling EID: 2",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 0 - 115", "2: 100 - 110"}));
}

void tst_TimeResolverLinks::brokenEndLinkBecomesADurationOfZero()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, fixed(300), toEndOf(9, 500)).with("endfixedtime", 70);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.text("endtype"), "0");
    QCOMPARE(child.text("endfixedtime"), "0");
    QCOMPARE(child.text("begin"), "300");
    QCOMPARE(child.text("end"), "300");
    QCOMPARE(child.text("endlinkeid"), "9");
}

void tst_TimeResolverLinks::theStartLinkIsFollowedAgainAfterABrokenEndLink()
{
    ResolverScene scene;
    scene.add(1, toEndOf(2, 5), toEndOf(9));
    scene.add(2, fixed(100), fixed(10));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 2",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() 1 START calling EID: 2",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 115 - 115", "2: 100 - 110"}));
}

void tst_TimeResolverLinks::bothLinksBrokenAreRepairedInOneGo()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, toEndOf(9, 500), toStartOf(8, 500));
    scene.add(2, toEndOf(1, 3));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "  updateEffectTime() EID: 1",
        "    Next Effect",
        "  updateEffectTime() EID: 2",
        "  updateEffectTime() 2 START calling EID: 1",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.changes,
             (QStringList{"starttype=0", "startfixedtime=0", "endtype=0", "endfixedtime=0"}));
    QCOMPARE(scene.times(), (QStringList{"1: 0 - 0", "2: 3 - 3"}));
}

void tst_TimeResolverLinks::aRepairedRuleStaysFixed()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, toEndOf(9, 500), toStartOf(9, 500));
    scene.pass();
    scene.add(9, fixed(1000), fixed(10));
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()", "    Next Effect",
        "  updateEffectTime() EID: 1",     "    Next Effect",
        "  updateEffectTime() EID: 9",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(child.text("begin"), "0");
    QCOMPARE(child.text("end"), "0");
}

void tst_TimeResolverLinks::aLinkOfAnotherCodeIsNotRepaired()
{
    ResolverScene scene;
    StubEffect &child = scene.add(1, toEndOf(9), toEndOf(9))
                            .with("starttype", 2)
                            .with("endtype", 3)
                            .with("startfixedtime", 5)
                            .with("endfixedtime", 6);
    child.changes.clear();
    QCOMPARE(scene.pass().size(), 3);
    QCOMPARE(child.changes, QStringList());
}

// --- Children of one eid ---

void tst_TimeResolverLinks::ofSeveralChildrenOfOneEidOnlyTheFirstIsResolved()
{
    ResolverScene scene;
    scene.add(1, fixed(100), fixed(10));
    scene.add(1, fixed(500), fixed(50)).with("begin", 7).with("end", 8);
    const QStringList transcript{
        "MetaEffect::updateEffectTimes()",
        "    Next Effect",
        "  updateEffectTime() EID: 1",
        "    Next Effect",
    };
    QCOMPARE(scene.pass(), transcript);
    QCOMPARE(scene.times(), (QStringList{"1: 100 - 110", "1: 7 - 8"}));
}

void tst_TimeResolverLinks::aLinkFindsTheFirstChildOfItsEid()
{
    ResolverScene scene;
    scene.add(2, toStartOf(1, 1));
    StubEffect &first = scene.add(1, fixed(100), fixed(10));
    StubEffect &second = scene.add(1, fixed(500), fixed(50));
    scene.pass();
    QCOMPARE(scene.at(0).text("begin"), "101");
    QCOMPARE(scene.dictionary.value(1), &first);

    // The second, asked for by itself, is resolved like any other; a link still finds the first.
    scene.dictionary.clear();
    second.with("starttype", 1).with("startlinkeid", 1).with("startlinkoffset", 4);
    second.with("startlinkstart", 1);
    scene.resolve(&second);
    QCOMPARE(second.text("begin"), "104");
}

QTEST_GUILESS_MAIN(tst_TimeResolverLinks)

#include "tst_TimeResolverLinks.moc"
