#include "EffectList.h"
#include "Probe.h"

#include <QTest>

#include <memory>
#include <vector>

namespace {

/// An effect of the given priority.
std::unique_ptr<Probe> ranked(int priority)
{
    auto effect = std::make_unique<Probe>();
    effect->with("priority", QString::number(priority));
    return effect;
}

} // namespace

class tst_EffectList : public QObject
{
    Q_OBJECT

private slots:
    void inSortInsertsBehindEquals();
    void sortIsStable();
    void removedEffectIsNotDeleted();
    void copiedListNeverOwns();
    void autoDeletingListDeletesOnce();
};

void tst_EffectList::inSortInsertsBehindEquals()
{
    const auto low = ranked(-1);
    const auto first = ranked(5);
    const auto second = ranked(5);
    const auto third = ranked(5);
    const auto high = ranked(9);
    EffectList list;
    for (Effect *effect : {first.get(), high.get(), second.get(), low.get(), third.get()})
        list.inSort(effect);
    const QList<Effect *> order(list.begin(), list.end());
    QCOMPARE(order,
             (QList<Effect *>{low.get(), first.get(), second.get(), third.get(), high.get()}));
    QCOMPARE(list.at(5), nullptr);
    QCOMPARE(list.at(-1), nullptr);
}

void tst_EffectList::sortIsStable()
{
    std::vector<std::unique_ptr<Probe>> effects;
    EffectList list;
    for (int i = 0; i < 100; ++i) {
        effects.push_back(ranked(i % 3));
        list.append(effects.back().get());
    }
    list.sort();
    QCOMPARE(list.count(), 100);
    int place = 0;
    for (int priority = 0; priority < 3; ++priority) {
        for (int i = priority; i < 100; i += 3)
            QCOMPARE(list.at(place++), effects[static_cast<std::size_t>(i)].get());
    }
}

void tst_EffectList::removedEffectIsNotDeleted()
{
    QStringList log;
    auto effect = std::make_unique<Probe>(nullptr, QStringLiteral("a"), &log);
    const auto other = ranked(0);
    EffectList list;
    list.setAutoDelete(true);
    list.append(effect.get());
    list.append(effect.get());
    QVERIFY(!list.remove(other.get()));
    QVERIFY(list.remove(effect.get()));
    QVERIFY(list.contains(effect.get()));
    QVERIFY(list.remove(effect.get()));
    QVERIFY(list.isEmpty());
    QVERIFY(log.isEmpty());
}

void tst_EffectList::copiedListNeverOwns()
{
    QStringList log;
    EffectList list;
    list.setAutoDelete(true);
    list.append(new Probe(nullptr, QStringLiteral("a"), &log));
    {
        EffectList copy(list);
        QVERIFY(!copy.autoDelete());
        QVERIFY(list.autoDelete());
        QCOMPARE(copy.at(0), list.at(0));
        copy.append(list.at(0));
        QCOMPARE(list.count(), 1);
    }
    QVERIFY(log.isEmpty());

    EffectList assigned;
    assigned.setAutoDelete(true);
    assigned.append(new Probe(nullptr, QStringLiteral("b"), &log));
    EffectList plain;
    assigned = plain;
    QCOMPARE(log, QStringList{"b deleted"});
    QVERIFY(assigned.autoDelete());
    QVERIFY(assigned.isEmpty());
    assigned.setAutoDelete(false);
    assigned = list;
    QVERIFY(!assigned.autoDelete());
    QCOMPARE(assigned.count(), 1);

    const EffectList &itself = list;
    list = itself;
    QCOMPARE(list.count(), 1);
    QCOMPARE(log, QStringList{"b deleted"});
}

void tst_EffectList::autoDeletingListDeletesOnce()
{
    QStringList log;
    {
        EffectList list;
        list.append(new Probe(nullptr, QStringLiteral("a"), &log));
        list.append(new Probe(nullptr, QStringLiteral("b"), &log));
        list.setAutoDelete(true);
        list.clear();
        QVERIFY(list.isEmpty());
        QCOMPARE(log, (QStringList{"a deleted", "b deleted"}));
        list.append(new Probe(nullptr, QStringLiteral("c"), &log));
    }
    QCOMPARE(log, (QStringList{"a deleted", "b deleted", "c deleted"}));
}

QTEST_GUILESS_MAIN(tst_EffectList)
#include "tst_EffectList.moc"
