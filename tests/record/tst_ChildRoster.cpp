#include "ChildRoster.h"
#include "StubEffect.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using meta::ChildRoster;
using meta::EidIndex;

namespace {

StubEffect *addTo(ChildRoster &roster, quint32 eid, int priority = 0)
{
    auto *child = new StubEffect(nullptr, eid);
    child->with("priority", priority);
    roster.insert(child);
    roster.raiseNextEid(*child);
    return child;
}

QList<Effect *> listed(const EffectList &list)
{
    return QList<Effect *>(list.begin(), list.end());
}

using Effects = QList<Effect *>;

} // namespace

class tst_ChildRoster : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void startsEmpty();
    void keepsTheHostsOrder();
    void sortsWhenAsked();

    void theNextEidIsOneMoreThanTheLargestSeen_data();
    void theNextEidIsOneMoreThanTheLargestSeen();
    void removingAChildKeepsTheNextEid();
    void aChildWithoutAnEidCountsAsEidZero();

    void findsAChildByItsEid();
    void findsTheFirstOfEqualEids();
    void findsByTheEidOfTheMoment();

    void nameNumbersCountUpFromOne();
    void nameNumbersRestartBehindTheChildren();

    void removingForgetsChildAndSelection();
    void removingAStrangerChangesNothing();
    void deletesItsChildrenOnce();
    void deletesNoChildThatWasRemoved();
    void neitherSelectionNorCopiesOwn();

    void indexFindsTheFirstOfEqualEids();
    void indexKeepsTheEidsOfItsMaking();
    void indexOfNothingFindsNothing();
};

void tst_ChildRoster::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_ChildRoster::startsEmpty()
{
    ChildRoster roster;
    QVERIFY(roster.children().isEmpty());
    QVERIFY(roster.selection().isEmpty());
    QCOMPARE(roster.nextEid(), 0u);
    QCOMPARE(roster.find(0), nullptr);
}

// --- Order ---

void tst_ChildRoster::keepsTheHostsOrder()
{
    ChildRoster roster;
    Effect *high = addTo(roster, 1, 9);
    Effect *low = addTo(roster, 2, -3);
    Effect *first = addTo(roster, 3, 4);
    Effect *second = addTo(roster, 4, 4);
    QCOMPARE(listed(roster.children()), (Effects{low, first, second, high}));
}

void tst_ChildRoster::sortsWhenAsked()
{
    ChildRoster roster;
    StubEffect *a = addTo(roster, 1, 1);
    Effect *b = addTo(roster, 2, 2);
    Effect *c = addTo(roster, 3, 2);
    a->with("priority", 5);
    QCOMPARE(listed(roster.children()), (Effects{a, b, c}));
    roster.sort();
    QCOMPARE(listed(roster.children()), (Effects{b, c, a}));
    roster.sort();
    QCOMPARE(listed(roster.children()), (Effects{b, c, a}));
}

// --- The next eid ---

void tst_ChildRoster::theNextEidIsOneMoreThanTheLargestSeen_data()
{
    QTest::addColumn<QList<quint32>>("added");
    QTest::addColumn<quint32>("next");
    QTest::newRow("none") << QList<quint32>{} << 0u;
    QTest::newRow("0") << QList<quint32>{0} << 1u;
    QTest::newRow("in a row") << QList<quint32>{0, 1, 2} << 3u;
    QTest::newRow("leaving a gap") << QList<quint32>{2, 7} << 8u;
    QTest::newRow("exactly the next") << QList<quint32>{2, 3} << 4u;
    QTest::newRow("one below the next") << QList<quint32>{3, 3} << 4u;
    QTest::newRow("far below the next") << QList<quint32>{7, 2} << 8u;
    QTest::newRow("before the largest") << QList<quint32>{4294967294} << 4294967295u;
    QTest::newRow("the largest") << QList<quint32>{4294967295} << 0u;
    QTest::newRow("after the largest") << QList<quint32>{4294967295, 5} << 6u;
}

void tst_ChildRoster::theNextEidIsOneMoreThanTheLargestSeen()
{
    QFETCH(const QList<quint32>, added);
    ChildRoster roster;
    for (const quint32 eid : added)
        addTo(roster, eid);
    QTEST(roster.nextEid(), "next");
}

void tst_ChildRoster::removingAChildKeepsTheNextEid()
{
    ChildRoster roster;
    const std::unique_ptr<Effect> child(addTo(roster, 7));
    roster.remove(child.get());
    QCOMPARE(roster.nextEid(), 8u);
}

void tst_ChildRoster::aChildWithoutAnEidCountsAsEidZero()
{
    ChildRoster roster;
    auto *child = new Effect(nullptr, 0);
    roster.insert(child);
    roster.raiseNextEid(*child);
    QCOMPARE(roster.nextEid(), 1u);
    QCOMPARE(roster.find(0), child);
}

// --- Looking up ---

void tst_ChildRoster::findsAChildByItsEid()
{
    ChildRoster roster;
    Effect *none = addTo(roster, 0);
    Effect *seven = addTo(roster, 7);
    Effect *largest = addTo(roster, 4294967295);
    QCOMPARE(roster.find(0), none);
    QCOMPARE(roster.find(7), seven);
    QCOMPARE(roster.find(4294967295), largest);
    QCOMPARE(roster.find(1), nullptr);
}

void tst_ChildRoster::findsTheFirstOfEqualEids()
{
    ChildRoster roster;
    StubEffect *first = addTo(roster, 7);
    StubEffect *second = addTo(roster, 7);
    QCOMPARE(roster.find(7), first);
    first->with("priority", 1);
    roster.sort();
    QCOMPARE(roster.find(7), second);
}

void tst_ChildRoster::findsByTheEidOfTheMoment()
{
    ChildRoster roster;
    StubEffect *child = addTo(roster, 7);
    child->with("eid", 9);
    QCOMPARE(roster.find(7), nullptr);
    QCOMPARE(roster.find(9), child);
    QCOMPARE(roster.nextEid(), 8u);
}

// --- Name numbers ---

void tst_ChildRoster::nameNumbersCountUpFromOne()
{
    ChildRoster roster;
    QCOMPARE(roster.takeNameNumber(), 1u);
    QCOMPARE(roster.takeNameNumber(), 2u);
    addTo(roster, 1);
    QCOMPARE(roster.takeNameNumber(), 3u);
}

void tst_ChildRoster::nameNumbersRestartBehindTheChildren()
{
    ChildRoster roster;
    roster.takeNameNumber();
    roster.restartNameNumbers();
    QCOMPARE(roster.takeNameNumber(), 1u);
    addTo(roster, 10);
    addTo(roster, 20);
    roster.restartNameNumbers();
    QCOMPARE(roster.takeNameNumber(), 3u);
    QCOMPARE(roster.takeNameNumber(), 4u);
}

// --- Ownership ---

void tst_ChildRoster::removingForgetsChildAndSelection()
{
    ChildRoster roster;
    const std::unique_ptr<Effect> gone(addTo(roster, 1));
    Effect *kept = addTo(roster, 2);
    roster.selection().append(kept);
    roster.selection().append(gone.get());
    roster.remove(gone.get());
    QCOMPARE(listed(roster.children()), Effects{kept});
    QCOMPARE(listed(roster.selection()), Effects{kept});
    QCOMPARE(roster.find(1), nullptr);
}

void tst_ChildRoster::removingAStrangerChangesNothing()
{
    ChildRoster roster;
    Effect *child = addTo(roster, 1);
    const StubEffect stranger(nullptr, 1);
    roster.remove(&stranger);
    roster.remove(nullptr);
    QCOMPARE(listed(roster.children()), Effects{child});
}

void tst_ChildRoster::deletesItsChildrenOnce()
{
    int deletions = 0;
    {
        ChildRoster roster;
        for (quint32 eid = 0; eid < 3; ++eid) {
            StubEffect *child = addTo(roster, eid);
            child->deletions = &deletions;
            roster.selection().append(child);
        }
        QCOMPARE(deletions, 0);
    }
    QCOMPARE(deletions, 3);
}

void tst_ChildRoster::deletesNoChildThatWasRemoved()
{
    bool isDeleted = false;
    std::unique_ptr<StubEffect> child;
    {
        ChildRoster roster;
        child.reset(addTo(roster, 1));
        child->deleted = &isDeleted;
        roster.remove(child.get());
        QVERIFY(!isDeleted);
    }
    QVERIFY(!isDeleted);
}

void tst_ChildRoster::neitherSelectionNorCopiesOwn()
{
    bool isDeleted = false;
    ChildRoster roster;
    StubEffect *child = addTo(roster, 1);
    child->deleted = &isDeleted;
    roster.selection().append(child);
    roster.selection().clear();
    {
        EffectList cleared = roster.children();
        cleared.clear();
        EffectList dropped = roster.children();
        dropped.append(nullptr);
        QCOMPARE(dropped.count(), 2);
    }
    QVERIFY(!isDeleted);
    QCOMPARE(listed(roster.children()), Effects{child});
}

// --- The index ---

void tst_ChildRoster::indexFindsTheFirstOfEqualEids()
{
    ChildRoster roster;
    Effect *first = addTo(roster, 7);
    addTo(roster, 7);
    Effect *other = addTo(roster, 0);
    const EidIndex index(roster.children());
    QCOMPARE(index.find(7), first);
    QCOMPARE(index.find(0), other);
    QCOMPARE(index.find(1), nullptr);
}

void tst_ChildRoster::indexKeepsTheEidsOfItsMaking()
{
    ChildRoster roster;
    StubEffect *child = addTo(roster, 7);
    const EidIndex index(roster.children());
    child->with("eid", 9);
    addTo(roster, 8);
    QCOMPARE(index.find(7), child);
    QCOMPARE(index.find(8), nullptr);
    QCOMPARE(index.find(9), nullptr);
}

void tst_ChildRoster::indexOfNothingFindsNothing()
{
    const EidIndex index{EffectList()};
    QCOMPARE(index.find(0), nullptr);
}

QTEST_GUILESS_MAIN(tst_ChildRoster)

#include "tst_ChildRoster.moc"
