#include "TimeResolver.h"

#include "ChildKeys.h"

#include <QLoggingCategory>

#include <utility>

namespace meta {

namespace {

// Costs next to nothing while the debug channel is off.
template<typename... Arguments>
void debugLine(const char *format, Arguments... arguments)
{
    if (!QLoggingCategory::defaultCategory()->isDebugEnabled())
        return;
    if constexpr (sizeof...(arguments) == 0)
        qDebug("%s", format);
    else
        qDebug(format, arguments...);
}

} // namespace

void TimeResolver::resolveAll()
{
    if (m_metLoop)
        return;
    debugLine("MetaEffect::updateEffectTimes()");
    m_resolved.clear();
    const EffectList children = m_roster.children();
    m_resolved.reserve(children.count());
    Pass pass{EidIndex(children)};
    for (Effect *child : children) {
        debugLine("    Next Effect");
        walk(pass, child);
    }
    m_metLoop = false;
}

void TimeResolver::resolve(Effect *child)
{
    if (!child || m_metLoop)
        return;
    Pass pass{EidIndex(m_roster.children())};
    walk(pass, child);
    m_metLoop = false;
}

void TimeResolver::walk(Pass &pass, Effect *child)
{
    enter(pass, child);
    while (!pass.visits.empty()) {
        Visit &visit = pass.visits.back();
        Effect &effect = *visit.child;
        switch (visit.step) {
        case Step::StartRule: {
            visit.step = Step::EndRule;
            const quint32 type = keys::startRule.type.read(effect);
            if (type == rule::fixed)
                keys::begin.write(effect, keys::startRule.fixedTime.read(effect));
            else if (type == rule::linked)
                followLink(pass, keys::startRule, "START", Step::StartTarget);
            break;
        }
        case Step::StartTarget:
            visit.step = Step::EndRule;
            takeTargetTime(keys::startRule, effect, *visit.target);
            break;
        case Step::EndRule: {
            visit.step = Step::Mark;
            const quint32 type = keys::endRule.type.read(effect);
            if (type == rule::fixed) {
                const Millis duration = keys::endRule.fixedTime.read(effect);
                keys::end.write(effect, duration.plusWrapping(keys::begin.read(effect)));
            } else if (type == rule::linked) {
                followLink(pass, keys::endRule, "END", Step::EndTarget);
            } else if (type == rule::cycles) {
                const auto cycle = static_cast<quint32>(effect.getCycleTime());
                const auto length = Millis::fromDoubleSaturating(
                    double(cycle) * double(keys::endCycleCount.read(effect)));
                keys::end.write(effect, length.plusWrapping(keys::begin.read(effect)));
            }
            break;
        }
        case Step::EndTarget:
            visit.step = Step::Mark;
            takeTargetTime(keys::endRule, effect, *visit.target);
            break;
        case Step::Mark:
            m_resolved.insert(visit.eid, visit.child);
            pass.underWay.remove(visit.child);
            pass.visits.pop_back();
            break;
        }
    }
}

void TimeResolver::enter(Pass &pass, Effect *child, bool isAnew)
{
    const quint32 eid = keys::eid.read(*child);
    if (m_resolved.contains(eid))
        return;
    if (!isAnew && pass.underWay.contains(child)) {
        if (!std::exchange(m_metLoop, true))
            qWarning("MetaEffect: the links of the child with EID %u form a loop", eid);
        return;
    }
    debugLine("  updateEffectTime() EID: %u", eid);
    pass.underWay.insert(child);
    pass.visits.push_back({child, eid});
}

// Goes on with the target, or, where the link is broken, with the same child anew: after a broken
// start link that visit resolves both rules, and the end rule is evaluated once more on return.
void TimeResolver::followLink(Pass &pass, const RuleKeys &rule, const char *ruleName,
                              Step afterTarget)
{
    Visit &visit = pass.visits.back();
    Effect *const child = visit.child;
    const quint32 targetEid = rule.linkEid.read(*child);
    Effect *const target = pass.index.find(targetEid);
    if (!target) {
        rule.type.write(*child, rule::fixed);
        rule.fixedTime.write(*child, Millis());
        enter(pass, child, true);
        return;
    }
    debugLine("  updateEffectTime() %u %s calling EID: %u", visit.eid, ruleName, targetEid);
    visit.target = target;
    visit.step = afterTarget;
    enter(pass, target);
}

void TimeResolver::takeTargetTime(const RuleKeys &rule, Effect &child, const Effect &target)
{
    const TimeKey &side = rule.linkStart.read(child) ? keys::begin : keys::end;
    const double time = rule.linkOffset.read(child).toDouble() + side.read(target).toDouble();
    rule.resolved.write(child, Millis::fromDoubleSaturating(time));
}

} // namespace meta
