#include "EffectHost.h"
#include "LogCapture.h"
#include "RandomRules.h"
#include "TimeResolver.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

/// Resolves by plain recursion, on the texts of the properties.
class Reference
{
public:
    explicit Reference(const meta::ChildRoster &roster) : m_roster(roster) {}

    void updateEffectTimes()
    {
        lines.append("MetaEffect::updateEffectTimes()");
        marks.clear();
        for (Effect *child : m_roster.children()) {
            lines.append("    Next Effect");
            updateEffectTime(child);
        }
    }

    void updateEffectTime(Effect *child, bool isRepair = false)
    {
        const quint32 eid = number(child, "eid");
        if (marks.contains(eid))
            return;
        if (!isRepair && m_underWay.contains(child)) {
            loopEids.append(eid);
            return;
        }
        if (!isRepair)
            m_underWay.insert(child);
        lines.append(QString("  updateEffectTime() EID: %1").arg(eid));

        const quint32 startType = number(child, "starttype");
        if (startType == 0)
            child->setProperty("begin", QString::number(number(child, "startfixedtime")));
        else if (startType == 1)
            updateLinked(child, "start", "START", "begin");

        const quint32 endType = number(child, "endtype");
        if (endType == 0) {
            const quint32 end = number(child, "begin") + number(child, "endfixedtime");
            child->setProperty("end", QString::number(end));
        } else if (endType == 1) {
            updateLinked(child, "end", "END", "end");
        } else if (endType == 2) {
            const quint64 cycle = child->getCycleTime();
            const quint64 count = number(child, "endcyclecount");
            const quint64 product = std::min<quint64>(cycle * count, 4294967295u);
            const quint64 end = (product + number(child, "begin")) % 4294967296u;
            child->setProperty("end", QString::number(end));
        }
        marks.insert(eid);
        if (!isRepair)
            m_underWay.remove(child);
    }

    QSet<quint32> marks;
    QStringList lines;
    /// The children at which the recursion would not have ended, were they entered again.
    QList<quint32> loopEids;

private:
    static quint32 number(const Effect *child, const QString &key)
    {
        return child->getPropertyString(key).toUInt();
    }

    Effect *getEffect(quint32 eid) const
    {
        for (Effect *child : m_roster.children()) {
            if (number(child, "eid") == eid)
                return child;
        }
        return nullptr;
    }

    void updateLinked(Effect *child, const QString &rule, const QString &name, const QString &key)
    {
        Effect *target = getEffect(number(child, rule + "linkeid"));
        if (!target) {
            child->setProperty(rule + "type", "0");
            child->setProperty(rule + "fixedtime", "0");
            updateEffectTime(child, true);
            return;
        }
        lines.append(QString("  updateEffectTime() %1 %2 calling EID: %3")
                         .arg(number(child, "eid"))
                         .arg(name)
                         .arg(number(target, "eid")));
        updateEffectTime(target);
        const QString side = child->getPropertyString(rule + "linkstart");
        const quint32 time = number(target, side == "1" || side == "true" ? "begin" : "end");
        bool isNumber = false;
        const double offset = child->getPropertyString(rule + "linkoffset").toDouble(&isNumber);
        const double sum = (isNumber ? offset : 0.0) + time;
        QString text = "0";
        if (sum >= 4294967295.0)
            text = "4294967295";
        else if (sum >= 0.0)
            text = QString::number(static_cast<quint64>(sum));
        child->setProperty(key, text);
    }

    const meta::ChildRoster &m_roster;
    QSet<Effect *> m_underWay;
};

/// The same children twice: one half for the resolver, the other for the reference.
struct Twins
{
    explicit Twins(const RandomRules &rules)
    {
        rules.addTo(ours);
        rules.addTo(theirs);
    }

    /// Lets the resolver do something; its debug lines.
    template<typename Work>
    QStringList linesOf(Work work)
    {
        const LogCapture log(QtDebugMsg);
        work();
        return log.lines();
    }

    /// Empty if both halves hold the same properties, written in the same order.
    QString difference() const
    {
        for (int i = 0; i < ours.roster.children().count(); ++i) {
            if (propertiesOf(ours.at(i)) != propertiesOf(theirs.at(i)))
                return QString("child %1: %2\ninstead of %3")
                    .arg(QString::number(i), propertiesOf(ours.at(i)).join(' '),
                         propertiesOf(theirs.at(i)).join(' '));
            if (ours.at(i).changes != theirs.at(i).changes)
                return QString("changes of child %1").arg(i);
        }
        const QList<quint32> marked = ours.dictionary.keys();
        return QSet<quint32>(marked.begin(), marked.end()) == reference.marks ? QString() : "marks";
    }

    static QStringList propertiesOf(const Effect &effect)
    {
        QStringList texts;
        for (const auto &property : EffectHost::properties(effect))
            texts.append(property.key + '=' + property.text);
        return texts;
    }

    RosterBuilder ours;
    RosterBuilder theirs;
    meta::TimeResolver resolver{ours.roster, ours.dictionary};
    Reference reference{theirs.roster};
};

QByteArray describe(quint32 seed, const QString &what)
{
    return QString("seed %1: %2").arg(seed).arg(what).toLocal8Bit();
}

} // namespace

class tst_TimeResolverRandom : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void passesAgreeWithPlainRecursion();
    void childByChildAgreesWithPlainRecursion();
    void loopsAreReportedExactlyWherePlainRecursionWouldNotEnd();
};

void tst_TimeResolverRandom::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".?")));
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true);
}

void tst_TimeResolverRandom::passesAgreeWithPlainRecursion()
{
    int links = 0;
    int repairs = 0;
    for (quint32 seed = 1; seed <= 4000; ++seed) {
        Twins twins(RandomRules(seed, RandomRules::Links::LoopFree, seed % 50 == 0 ? 40 : 8));
        // The second pass meets repaired rules; before the third a target goes away.
        for (int pass = 1; pass <= 3; ++pass) {
            if (pass == 3) {
                const int last = twins.ours.roster.children().count() - 1;
                for (RosterBuilder *builder : {&twins.ours, &twins.theirs})
                    builder->at(last).with("eid", 4000000000.0);
            }
            twins.reference.lines.clear();
            twins.reference.updateEffectTimes();
            QVERIFY2(twins.reference.loopEids.isEmpty(), describe(seed, "has a loop"));
            const QStringList lines = twins.linesOf([&] { twins.resolver.resolveAll(); });
            QVERIFY2(lines == twins.reference.lines,
                     describe(seed, lines.join('\n') + "\ninstead of\n"
                                        + twins.reference.lines.join('\n')));
            QVERIFY2(twins.difference().isEmpty(), describe(seed, twins.difference()));
            links += static_cast<int>(lines.filter("calling").size());
        }
        for (int i = 0; i < twins.ours.roster.children().count(); ++i)
            repairs += twins.ours.at(i).changes.contains("starttype=0");
    }
    // The sets are worth the name.
    QVERIFY(links > 10000);
    QVERIFY(repairs > 1000);
}

void tst_TimeResolverRandom::childByChildAgreesWithPlainRecursion()
{
    for (quint32 seed = 1; seed <= 2000; ++seed) {
        Twins twins(RandomRules(seed, RandomRules::Links::LoopFree));
        Dice dice(seed);
        const auto count = static_cast<quint32>(twins.ours.roster.children().count());
        for (int call = 0; call < 6; ++call) {
            if (dice.oneIn(4)) {
                twins.ours.dictionary.clear();
                twins.reference.marks.clear();
            }
            const int child = static_cast<int>(dice.roll(count));
            twins.reference.lines.clear();
            twins.reference.updateEffectTime(&twins.theirs.at(child));
            QCOMPARE(twins.linesOf([&] { twins.resolver.resolve(&twins.ours.at(child)); }),
                     twins.reference.lines);
            QVERIFY2(twins.difference().isEmpty(), describe(seed, twins.difference()));
        }
    }
}

void tst_TimeResolverRandom::loopsAreReportedExactlyWherePlainRecursionWouldNotEnd()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    int loops = 0;
    for (quint32 seed = 1; seed <= 3000; ++seed) {
        Twins twins(RandomRules(seed, RandomRules::Links::Any));
        for (int pass = 1; pass <= 2; ++pass) {
            twins.reference.loopEids.clear();
            twins.reference.updateEffectTimes();
            QStringList expected;
            if (!twins.reference.loopEids.isEmpty())
                expected.append(
                    QString("MetaEffect: the links of the child with EID %1 form a loop")
                        .arg(twins.reference.loopEids.first()));
            const LogCapture warnings(QtWarningMsg);
            twins.resolver.resolveAll();
            QCOMPARE(warnings.lines(), expected);
            QVERIFY2(twins.difference().isEmpty(), describe(seed, twins.difference()));
            loops += static_cast<int>(expected.size());
        }
    }
    QVERIFY(loops > 1000);
}

QTEST_GUILESS_MAIN(tst_TimeResolverRandom)

#include "tst_TimeResolverRandom.moc"
