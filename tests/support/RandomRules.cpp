#include "RandomRules.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

const QStringList times{u"0"_s,          u"1"_s,   u"250"_s,  u"3000"_s,       u"2147483648"_s,
                        u"4294967295"_s, u" +7"_s, u"late"_s, u"4294967296"_s, u""_s};
const QStringList offsets{u"0"_s,     u"500"_s,         u"-500"_s, u"-3000.75"_s,  u"0.5"_s,
                          u"-0.25"_s, u"1.23457e+06"_s, u"1e10"_s, u"-1e10"_s,     u"nan"_s,
                          u"inf"_s,   u"-inf"_s,        u"soon"_s, u"4294967295"_s};
const QStringList codes{u"0"_s, u"1"_s, u"1"_s, u"1"_s, u"2"_s, u"3"_s, u"5"_s, u"none"_s};
const QStringList sides{u"0"_s, u"1"_s, u"true"_s, u"start"_s};
const QStringList counts{u"0"_s, u"1"_s, u"3"_s, u"65536"_s, u"4294967295"_s, u"-1"_s};
const QList<quint32> cycleTimes{0, 1, 1500, 65536, 4294967295};

} // namespace

RandomRules::RandomRules(quint32 seed, Links links, quint32 mostChildren)
{
    Dice dice(seed);
    const auto count = static_cast<qsizetype>(1 + dice.roll(mostChildren));

    // Few eids, so that some are given twice and some links find nobody; every other set is dense.
    const bool isDense = dice.oneIn(2);
    const auto eidRange = static_cast<quint32>(isDense ? count + 1 : 2 * count);
    const quint32 firstEid = dice.oneIn(10) ? 4294967290u : dice.roll(2);
    for (qsizetype i = 0; i < count; ++i)
        children.append({firstEid + dice.roll(eidRange), dice.pick(cycleTimes), {}});

    // A child may link to those of lower rank only, unless loops are wanted.
    QList<qsizetype> ranks(count);
    std::iota(ranks.begin(), ranks.end(), 0);
    for (qsizetype i = count - 1; i > 0; --i)
        ranks.swapItemsAt(i, dice.roll(static_cast<quint32>(i + 1)));
    const auto isAllowed = [&](qsizetype from, quint32 eid) {
        const auto target = std::find_if(children.begin(), children.end(),
                                         [eid](const Child &child) { return child.eid == eid; });
        return links == Links::Any || target == children.end()
               || ranks[target - children.begin()] < ranks[from];
    };

    for (qsizetype i = 0; i < count; ++i) {
        Child &child = children[i];
        const auto give = [&](const QString &key, const QString &text) {
            if (!dice.oneIn(12)) // a missing key reads as 0
                child.properties.append({key, text});
        };
        give(u"begin"_s, dice.pick(times));
        give(u"end"_s, dice.pick(times));
        for (const QString &side : {u"start"_s, u"end"_s}) {
            give(side + "fixedtime", dice.pick(times));
            give(side + "linkstart", dice.pick(sides));
            give(side + "linkoffset", dice.pick(offsets));
            quint32 target = firstEid + dice.roll(eidRange);
            for (int tries = 0; tries < 5 && !isAllowed(i, target); ++tries)
                target = firstEid + dice.roll(eidRange);
            const bool mayLink = isAllowed(i, target);
            const QString code = isDense && !dice.oneIn(4) ? u"1"_s : dice.pick(codes);
            // A missing eid would be a link to the child of eid 0.
            if (!dice.oneIn(12) || !isAllowed(i, 0))
                child.properties.append({side + "linkeid", QString::number(target)});
            child.properties.append({side + "type", code == u"1" && !mayLink ? u"0"_s : code});
        }
        give(u"endcyclecount"_s, dice.pick(counts));
    }
}

void RandomRules::addTo(RosterBuilder &builder) const
{
    for (const Child &child : children) {
        StubEffect &effect = builder.add(child.eid);
        effect.cycleTime = child.cycleTime;
        for (const auto &[key, text] : child.properties)
            effect.setProperty(key, text);
        effect.changes.clear();
    }
}
