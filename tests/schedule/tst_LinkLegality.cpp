#include "LinkLegality.h"
#include "RosterBuilder.h"
#include "SmallStack.h"
#include "TimeResolver.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <limits>

namespace {

/// Children, and the test of their links; X, Y and Z have eids 1, 2 and 3 wherever they occur.
class Scene : public RosterBuilder
{
public:
    /// The eids of those that `edited` may be linked to.
    QList<quint32> targets(Effect &edited)
    {
        QList<quint32> eids;
        const EffectList targets = legality.legalTargets(&edited);
        for (const Effect *target : targets)
            eids.append(static_cast<quint32>(target->getPropertyULong("eid")));
        return eids;
    }
    bool isLegal(Effect &edited, Effect &candidate)
    {
        return legality.legalToLink(&edited, &candidate);
    }
    QList<quint32> remembered() const { return dictionary.keys(); }

    meta::LinkLegality legality{roster, dictionary};
};

using Eids = QList<quint32>;

/// Each child starts at the end of the one with the next smaller eid; eid 1 is fixed.
void addChain(Scene &scene, quint32 length, bool longestFirst)
{
    for (quint32 i = 0; i < length; ++i) {
        const quint32 eid = longestFirst ? length - i : i + 1;
        scene.add(eid, eid > 1 ? toEndOf(eid - 1) : fixed(0));
    }
}

} // namespace

class tst_LinkLegality : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aChildIsNeverATargetOfItself();
    void nullIsNeverLegal();
    void unlinkedSiblingsAreAllLegal();
    void aCandidateThatStartsAtTheEditedChildIsRefused();
    void afterTheFirstLegalCandidateTheOthersAreNotExamined();
    void refusalsBeforeTheFirstLegalCandidateStand();
    void aCandidateIsJudgedByItsRules_data();
    void aCandidateIsJudgedByItsRules();
    void linksAreFollowedFurtherDown();
    void everyCandidateMayBeRefused();

    void aLegalAnswerRemembersTheEditedChildOnly();
    void aRefusalRemembersNothing();
    void theMemoryIsKeyedOnTheEditedChild();
    void anEndLinkIsNotExaminedAfterALegalStartLink();
    void anEndLinkToTheEditedChildItselfIsRefusedEvenThen();
    void aSeriesStartsWithAnEmptyMemory();
    void theTestNeverEmptiesTheMemory();
    void aSeriesForNobodyIsEmpty();
    void aPassLeavesEveryChildRemembered();
    void nothingIsWrittenToAnyChild();

    void aLinkLeadsToTheFirstChildOfItsEid();
    void childrenOfOneEidShareTheMemory();
    void aMissingEidIsEidZero();

    void aCandidateLinkedToItselfIsLegal();
    void aLoopBesideTheEditedChildIsLegal();
    void aLoopThatLeadsToTheEditedChildIsRefused();
    void theEditedChildsOwnLoopIsRefused();
    void aLoopDoesNotHideWhatComesAfterIt();

    void aLongWalkNeedsNoStack_data();
    void aLongWalkNeedsNoStack();
    void aLongLoopNeedsNoStack();
    void aRememberedAnswerCostsNoWalk();
    void aSeriesOfRefusalsCostsInProportionToTheChildren_data();
    void aSeriesOfRefusalsCostsInProportionToTheChildren();
};

void tst_LinkLegality::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

// --- Answers ---

void tst_LinkLegality::aChildIsNeverATargetOfItself()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    QVERIFY(!scene.isLegal(x, x));
    QVERIFY(scene.dictionary.isEmpty());
    scene.dictionary.insert(1, &x);
    QVERIFY(!scene.isLegal(x, x));
}

void tst_LinkLegality::nullIsNeverLegal()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    for (int round = 1; round <= 2; ++round) {
        QVERIFY(!scene.legality.legalToLink(nullptr, &x));
        QVERIFY(!scene.legality.legalToLink(&x, nullptr));
        QVERIFY(!scene.legality.legalToLink(nullptr, nullptr));
        QCOMPARE(scene.dictionary.size(), round - 1);
        scene.dictionary.insert(1, &x);
    }
}

void tst_LinkLegality::unlinkedSiblingsAreAllLegal()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2);
    StubEffect &z = scene.add(3);
    QCOMPARE(scene.targets(x), (Eids{2, 3}));
    QCOMPARE(scene.targets(y), (Eids{1, 3}));
    QCOMPARE(scene.targets(z), (Eids{1, 2}));
}

void tst_LinkLegality::aCandidateThatStartsAtTheEditedChildIsRefused()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    scene.add(2, toStartOf(1));
    scene.add(3);
    QCOMPARE(scene.targets(x), Eids{3});
    QCOMPARE(scene.remembered(), Eids{1});
}

void tst_LinkLegality::afterTheFirstLegalCandidateTheOthersAreNotExamined()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2);
    StubEffect &z = scene.add(3, toStartOf(1));
    QCOMPARE(scene.targets(x), (Eids{2, 3}));

    scene.dictionary.clear();
    QVERIFY(!scene.isLegal(x, z));
    QVERIFY(scene.isLegal(x, y));
    QVERIFY(scene.isLegal(x, z));
}

void tst_LinkLegality::refusalsBeforeTheFirstLegalCandidateStand()
{
    Scene scene;
    scene.add(3, toStartOf(1));
    scene.add(2);
    StubEffect &x = scene.add(1);
    QCOMPARE(scene.targets(x), Eids{2});
}

void tst_LinkLegality::aCandidateIsJudgedByItsRules_data()
{
    QTest::addColumn<QString>("startType");
    QTest::addColumn<QString>("startLink");
    QTest::addColumn<QString>("endType");
    QTest::addColumn<QString>("endLink");
    QTest::addColumn<bool>("isLegal");
    // 1 is the edited child, 3 an unlinked one, 9 nobody.
    QTest::newRow("fixed") << "0" << "3" << "0" << "3" << true;
    QTest::newRow("links that wait behind fixed rules") << "0" << "1" << "0" << "1" << true;
    QTest::newRow("cycles") << "0" << "1" << "2" << "1" << true;
    QTest::newRow("other codes") << "2" << "1" << "3" << "1" << true;
    QTest::newRow("codes that are no numbers") << "x" << "1" << "" << "1" << true;
    QTest::newRow("start elsewhere") << "1" << "3" << "0" << "" << true;
    QTest::newRow("end elsewhere") << "0" << "" << "1" << "3" << true;
    QTest::newRow("both elsewhere") << "1" << "3" << "1" << "3" << true;
    QTest::newRow("start broken") << "1" << "9" << "0" << "" << true;
    QTest::newRow("end broken") << "0" << "" << "1" << "9" << true;
    QTest::newRow("both broken") << "1" << "9" << "1" << "9" << true;
    QTest::newRow("start at the edited child") << "1" << "1" << "0" << "" << false;
    QTest::newRow("end at the edited child") << "0" << "" << "1" << "1" << false;
    QTest::newRow("both") << "1" << "1" << "1" << "1" << false;
    QTest::newRow("start broken, end at it") << "1" << "9" << "1" << "1" << false;
    QTest::newRow("start at it, end broken") << "1" << "1" << "1" << "9" << false;
}

void tst_LinkLegality::aCandidateIsJudgedByItsRules()
{
    QFETCH(const QString, startType);
    QFETCH(const QString, startLink);
    QFETCH(const QString, endType);
    QFETCH(const QString, endLink);
    QFETCH(const bool, isLegal);
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2)
                        .with("starttype", startType)
                        .with("startlinkeid", startLink)
                        .with("endtype", endType)
                        .with("endlinkeid", endLink);
    scene.add(3);
    QCOMPARE(scene.isLegal(x, y), isLegal);
    QCOMPARE(scene.remembered(), isLegal ? Eids{1} : Eids{});
}

void tst_LinkLegality::linksAreFollowedFurtherDown()
{
    Scene scene;
    scene.add(5, toStartOf(4));
    scene.add(4, fixed(0), toEndOf(3));
    scene.add(3, toStartOf(2), cycles(1));
    scene.add(2, toStartOf(9), toEndOf(1));
    StubEffect &x = scene.add(1);
    scene.add(6);
    QCOMPARE(scene.targets(x), Eids{6});
    QCOMPARE(scene.targets(scene.at(2)), (Eids{2, 1, 6}));
}

void tst_LinkLegality::everyCandidateMayBeRefused()
{
    Scene scene;
    addChain(scene, 10, true);
    QCOMPARE(scene.targets(scene.at(9)), Eids{});
    QVERIFY(scene.dictionary.isEmpty());
}

// --- The memory ---

void tst_LinkLegality::aLegalAnswerRemembersTheEditedChildOnly()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(3), toEndOf(3));
    scene.add(3);
    QVERIFY(scene.isLegal(x, y));
    QCOMPARE(scene.dictionary, (meta::ChildrenByEid{{1, &x}}));
}

void tst_LinkLegality::aRefusalRemembersNothing()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(3));
    StubEffect &z = scene.add(3, toStartOf(1));
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(!scene.isLegal(x, z));
    QVERIFY(!scene.isLegal(x, x));
    QVERIFY(scene.dictionary.isEmpty());
}

void tst_LinkLegality::theMemoryIsKeyedOnTheEditedChild()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(1));
    // Remembering the candidate changes nothing.
    scene.dictionary.insert(2, &y);
    QVERIFY(!scene.isLegal(x, y));
    // Remembering the edited child decides, whoever stands behind its eid.
    scene.dictionary.insert(1, nullptr);
    QVERIFY(scene.isLegal(x, y));
    QVERIFY(scene.isLegal(y, x));
    QCOMPARE(scene.dictionary.value(1), nullptr);
}

void tst_LinkLegality::anEndLinkIsNotExaminedAfterALegalStartLink()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(3), toStartOf(4));
    scene.add(3);
    scene.add(4, toStartOf(1)); // reaches the edited child
    QVERIFY(scene.isLegal(x, y));

    // The other way round the same links are refused.
    scene.dictionary.clear();
    y.with("startlinkeid", 4).with("endlinkeid", 3);
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(scene.dictionary.isEmpty());
}

void tst_LinkLegality::anEndLinkToTheEditedChildItselfIsRefusedEvenThen()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(3), toStartOf(1));
    scene.add(3);
    scene.add(4, toStartOf(2));
    // The start link below was legal and is remembered all the same, so all later ones are legal.
    QVERIFY(!scene.isLegal(x, y));
    QCOMPARE(scene.remembered(), Eids{1});
    QVERIFY(scene.isLegal(x, y));
    QCOMPARE(scene.targets(x), (Eids{3, 4}));
}

void tst_LinkLegality::aSeriesStartsWithAnEmptyMemory()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(1));
    scene.dictionary = {{1, &x}, {2, &y}, {77, &y}};
    QCOMPARE(scene.targets(x), Eids{});
    QVERIFY(scene.dictionary.isEmpty());
}

void tst_LinkLegality::theTestNeverEmptiesTheMemory()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(1));
    StubEffect &z = scene.add(3);
    scene.dictionary.insert(77, &y);
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(scene.isLegal(x, z));
    QVERIFY(scene.isLegal(z, x));
    QCOMPARE(scene.dictionary, (meta::ChildrenByEid{{1, &x}, {3, &z}, {77, &y}}));
}

void tst_LinkLegality::aSeriesForNobodyIsEmpty()
{
    Scene scene;
    scene.add(1);
    QVERIFY(scene.legality.legalTargets(nullptr).isEmpty());
}

// The marks of a pass are left where the test remembers, so a series has to start anew.
void tst_LinkLegality::aPassLeavesEveryChildRemembered()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(1));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    meta::TimeResolver(scene.roster, scene.dictionary).resolveAll();
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
    QVERIFY(scene.isLegal(x, y));
    QCOMPARE(scene.targets(x), Eids{});
}

void tst_LinkLegality::nothingIsWrittenToAnyChild()
{
    Scene scene;
    StubEffect &x = scene.add(1, toStartOf(9), toStartOf(9));
    scene.add(2, toStartOf(9), toStartOf(1));
    scene.add(3, toStartOf(2), toStartOf(9));
    scene.targets(x);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(scene.at(i).changes, QStringList());
}

// --- Eids ---

void tst_LinkLegality::aLinkLeadsToTheFirstChildOfItsEid()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    scene.add(2, toStartOf(3));
    scene.add(3);
    scene.add(3, toStartOf(1));
    QVERIFY(scene.isLegal(x, scene.at(1)));

    // A link to the edited child's eid leads to another child, if that one is listed before it.
    scene.dictionary.clear();
    StubEffect &secondOne = scene.add(1);
    StubEffect &candidate = scene.add(4, toStartOf(1));
    QVERIFY(scene.isLegal(secondOne, candidate));
    scene.dictionary.clear();
    QVERIFY(!scene.isLegal(x, candidate));
}

void tst_LinkLegality::childrenOfOneEidShareTheMemory()
{
    Scene scene;
    StubEffect &first = scene.add(1);
    StubEffect &second = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(1));
    QVERIFY(!scene.isLegal(first, y));
    QVERIFY(scene.isLegal(first, second));
    QVERIFY(scene.isLegal(second, first));
    QVERIFY(scene.isLegal(first, y));
}

void tst_LinkLegality::aMissingEidIsEidZero()
{
    Scene scene;
    Effect bare(nullptr, 0);
    StubEffect &x = scene.add(0);
    StubEffect &y = scene.add(1, ofCode("1")); // no link eid: linked to eid 0
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(scene.isLegal(bare, y));
    QCOMPARE(scene.remembered(), Eids{0});
    QVERIFY(scene.isLegal(x, y));
}

// --- Loops ---

void tst_LinkLegality::aCandidateLinkedToItselfIsLegal()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    scene.add(2, toStartOf(2));
    scene.add(3, fixed(0), toStartOf(3));
    QVERIFY(scene.isLegal(x, scene.at(1)));
    scene.dictionary.clear();
    QVERIFY(scene.isLegal(x, scene.at(2)));
    QCOMPARE(scene.remembered(), Eids{1});
}

void tst_LinkLegality::aLoopBesideTheEditedChildIsLegal()
{
    Scene scene;
    scene.add(2, toStartOf(3));
    scene.add(3, fixed(0), toStartOf(4));
    scene.add(4, toStartOf(2));
    StubEffect &x = scene.add(1);
    QCOMPARE(scene.targets(x), (Eids{2, 3, 4}));
}

void tst_LinkLegality::aLoopThatLeadsToTheEditedChildIsRefused()
{
    Scene scene;
    scene.add(2, toStartOf(3));
    scene.add(3, toStartOf(2), toStartOf(1));
    StubEffect &x = scene.add(1);
    QVERIFY(!scene.isLegal(x, scene.at(0)));
    QVERIFY(scene.dictionary.isEmpty());
    QCOMPARE(scene.targets(x), Eids{});
}

void tst_LinkLegality::theEditedChildsOwnLoopIsRefused()
{
    Scene scene;
    StubEffect &x = scene.add(1, toStartOf(2));
    StubEffect &y = scene.add(2, toStartOf(1));
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(!scene.isLegal(y, x));
    QVERIFY(scene.dictionary.isEmpty());
}

void tst_LinkLegality::aLoopDoesNotHideWhatComesAfterIt()
{
    Scene scene;
    StubEffect &x = scene.add(1);
    StubEffect &y = scene.add(2, toStartOf(2), toStartOf(1));
    QVERIFY(!scene.isLegal(x, y));
    QVERIFY(scene.dictionary.isEmpty());
}

// --- Size ---

void tst_LinkLegality::aLongWalkNeedsNoStack_data()
{
    QTest::addColumn<bool>("isLegal");
    QTest::newRow("legal at its end") << true;
    QTest::newRow("refused at its end") << false;
}

void tst_LinkLegality::aLongWalkNeedsNoStack()
{
    QFETCH(const bool, isLegal);
    constexpr quint32 length = 100000;
    Scene scene;
    addChain(scene, length, true);
    StubEffect &outside = scene.add(length + 1);
    Effect &longest = scene.at(0);
    Effect &edited = isLegal ? outside : scene.at(static_cast<int>(length) - 1);
    bool answer = !isLegal;
    QList<quint32> targets;
    runOnSmallStack([&] {
        answer = scene.isLegal(edited, longest);
        targets = scene.targets(edited);
    });
    QCOMPARE(answer, isLegal);
    QCOMPARE(targets.size(), isLegal ? qsizetype{length} : 1);
}

void tst_LinkLegality::aLongLoopNeedsNoStack()
{
    constexpr quint32 length = 100000;
    Scene scene;
    for (quint32 eid = 1; eid <= length; ++eid)
        scene.add(eid, toStartOf(eid < length ? eid + 1 : 1));
    StubEffect &outside = scene.add(length + 1);
    bool answer = false;
    runOnSmallStack([&] { answer = scene.isLegal(outside, scene.at(0)); });
    QVERIFY(answer);
}

void tst_LinkLegality::aRememberedAnswerCostsNoWalk()
{
    constexpr quint32 length = 10000;
    Scene scene;
    addChain(scene, length, true);
    StubEffect &edited = scene.add(length + 1);
    qint64 walk = std::numeric_limits<qint64>::max();
    qint64 remembered = walk;
    for (int round = 0; round < 5; ++round) {
        scene.dictionary.clear();
        QElapsedTimer timer;
        timer.start();
        QVERIFY(scene.isLegal(edited, scene.at(0)));
        walk = std::min(walk, timer.nsecsElapsed());
        timer.start();
        QVERIFY(scene.isLegal(edited, scene.at(0)));
        remembered = std::min(remembered, timer.nsecsElapsed());
    }
    QVERIFY2(20 * remembered < walk, qPrintable(QString("%1 ns, %2 ns").arg(remembered).arg(walk)));
}

void tst_LinkLegality::aSeriesOfRefusalsCostsInProportionToTheChildren_data()
{
    QTest::addColumn<bool>("longestFirst");
    QTest::newRow("the longest walk first") << true;
    QTest::newRow("the longest walk last") << false;
}

// A single walk along the whole chain is the measure: the series must cost a few of those, whereas
// a walk for each child would cost thousands.
void tst_LinkLegality::aSeriesOfRefusalsCostsInProportionToTheChildren()
{
    QFETCH(const bool, longestFirst);
    constexpr int length = 10000;
    Scene scene;
    addChain(scene, length, longestFirst);
    Effect &first = scene.at(longestFirst ? length - 1 : 0);
    Effect &longest = scene.at(longestFirst ? 0 : length - 1);
    qint64 walk = std::numeric_limits<qint64>::max();
    qint64 series = walk;
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!scene.isLegal(first, longest));
        walk = std::min(walk, timer.nsecsElapsed());
        timer.start();
        QVERIFY(scene.legality.legalTargets(&first).isEmpty());
        series = std::min(series, timer.nsecsElapsed());
    }
    QVERIFY2(series < 100 * walk, qPrintable(QString("%1 ns, %2 ns").arg(series).arg(walk)));
}

QTEST_GUILESS_MAIN(tst_LinkLegality)

#include "tst_LinkLegality.moc"
