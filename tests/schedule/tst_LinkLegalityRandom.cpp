#include "LinkLegality.h"
#include "RandomRules.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

/// Answers by plain recursion, on the texts of the properties.
class Reference
{
public:
    explicit Reference(const meta::ChildRoster &roster) : m_roster(roster) {}

    bool legalToLink(Effect *a, Effect *b)
    {
        if (!a || !b || a == b)
            return false;
        if (memory.contains(number(a, "eid")))
            return true;
        if (m_underWay.contains(b)) {
            metLoop = true;
            return true;
        }
        m_underWay.insert(b);
        const bool isLegal = legalBelow(a, b, "start") && legalBelow(a, b, "end");
        m_underWay.remove(b);
        if (isLegal)
            memory.insert(number(a, "eid"));
        return isLegal;
    }

    QList<Effect *> legalTargets(Effect *a)
    {
        memory.clear();
        QList<Effect *> targets;
        for (Effect *candidate : m_roster.children()) {
            if (legalToLink(a, candidate))
                targets.append(candidate);
        }
        return targets;
    }

    QSet<quint32> memory;
    /// Whether a child was met again below itself, where the recursion would not have ended.
    bool metLoop = false;

private:
    static quint32 number(const Effect *child, const QString &key)
    {
        return child->getPropertyString(key).toUInt();
    }

    bool legalBelow(Effect *a, Effect *b, const QString &rule)
    {
        if (number(b, rule + "type") != 1)
            return true;
        for (Effect *child : m_roster.children()) {
            if (number(child, "eid") == number(b, rule + "linkeid"))
                return legalToLink(a, child);
        }
        return true;
    }

    const meta::ChildRoster &m_roster;
    QSet<Effect *> m_underWay;
};

struct Scene : RosterBuilder
{
    explicit Scene(const RandomRules &rules) { rules.addTo(*this); }

    bool remembersLikeTheReference() const
    {
        const QList<quint32> eids = dictionary.keys();
        return QSet<quint32>(eids.begin(), eids.end()) == reference.memory;
    }
    QList<Effect *> targets(Effect *edited)
    {
        const EffectList targets = legality.legalTargets(edited);
        return QList<Effect *>(targets.begin(), targets.end());
    }

    meta::LinkLegality legality{roster, dictionary};
    Reference reference{roster};
};

} // namespace

class tst_LinkLegalityRandom : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void seriesAgreeWithPlainRecursion();
    void singleAnswersAgreeWithPlainRecursion_data();
    void singleAnswersAgreeWithPlainRecursion();
    void seriesEndAmongLoopsAndAgreeWherePlainRecursionEnds();
};

void tst_LinkLegalityRandom::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
}

void tst_LinkLegalityRandom::seriesAgreeWithPlainRecursion()
{
    int offered = 0;
    int refused = 0;
    for (quint32 seed = 1; seed <= 4000; ++seed) {
        const quint32 mostChildren = seed % 50 == 0 ? 40 : 8;
        Scene scene(RandomRules(seed, RandomRules::Links::LoopFree, mostChildren));
        const EffectList children = scene.roster.children();
        for (Effect *edited : children) {
            const QList<Effect *> expected = scene.reference.legalTargets(edited);
            QVERIFY2(scene.targets(edited) == expected, QByteArray::number(seed));
            QVERIFY2(scene.remembersLikeTheReference(), QByteArray::number(seed));
            offered += static_cast<int>(expected.size());
            refused += children.count() - 1 - static_cast<int>(expected.size());
        }
        QVERIFY(!scene.reference.metLoop);
    }
    // The sets are worth the name.
    QVERIFY(offered > 10000);
    QVERIFY(refused > 1500);
}

void tst_LinkLegalityRandom::singleAnswersAgreeWithPlainRecursion_data()
{
    QTest::addColumn<bool>("withLoops");
    QTest::newRow("without loops") << false;
    QTest::newRow("with loops") << true;
}

// Any children in any order, the memory emptied now and then.
void tst_LinkLegalityRandom::singleAnswersAgreeWithPlainRecursion()
{
    QFETCH(const bool, withLoops);
    const auto links = withLoops ? RandomRules::Links::Any : RandomRules::Links::LoopFree;
    int loops = 0;
    for (quint32 seed = 1; seed <= 4000; ++seed) {
        Scene scene(RandomRules(seed, links));
        const EffectList children = scene.roster.children();
        Dice dice(seed);
        for (int call = 0; call < 20; ++call) {
            if (dice.oneIn(4)) {
                scene.dictionary.clear();
                scene.reference.memory.clear();
            }
            const auto count = static_cast<quint32>(children.count());
            Effect *edited = children.at(static_cast<int>(dice.roll(count)));
            Effect *candidate = children.at(static_cast<int>(dice.roll(count)));
            const bool expected = scene.reference.legalToLink(edited, candidate);
            QVERIFY2(scene.legality.legalToLink(edited, candidate) == expected,
                     QByteArray::number(seed));
            QVERIFY2(scene.remembersLikeTheReference(), QByteArray::number(seed));
        }
        loops += scene.reference.metLoop;
    }
    QCOMPARE(loops > 500, withLoops);
}

void tst_LinkLegalityRandom::seriesEndAmongLoopsAndAgreeWherePlainRecursionEnds()
{
    int agreed = 0;
    for (quint32 seed = 1; seed <= 4000; ++seed) {
        Scene scene(RandomRules(seed, RandomRules::Links::Any));
        const EffectList children = scene.roster.children();
        for (Effect *edited : children) {
            const QList<Effect *> targets = scene.targets(edited);
            QVERIFY(!targets.contains(edited));
            scene.reference.metLoop = false;
            const QList<Effect *> expected = scene.reference.legalTargets(edited);
            if (scene.reference.metLoop)
                continue;
            ++agreed;
            QVERIFY2(targets == expected, QByteArray::number(seed));
            QVERIFY2(scene.remembersLikeTheReference(), QByteArray::number(seed));
        }
    }
    QVERIFY(agreed > 2000);
}

QTEST_GUILESS_MAIN(tst_LinkLegalityRandom)

#include "tst_LinkLegalityRandom.moc"
