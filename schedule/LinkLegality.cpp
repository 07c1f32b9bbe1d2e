#include "LinkLegality.h"

#include "ChildKeys.h"

#include <vector>

namespace meta {

namespace {

Effect *linkTarget(const RuleKeys &rule, const Effect &child, const EidIndex &index)
{
    if (rule.type.read(child) != rule::linked)
        return nullptr;
    return index.find(rule.linkEid.read(child));
}

} // namespace

bool LinkLegality::legalToLink(Effect *edited, Effect *candidate)
{
    if (!edited || !candidate || candidate == edited)
        return false;
    if (m_memory.contains(keys::eid.read(*edited)))
        return true;
    Refused refused;
    return examine(edited, candidate, EidIndex(m_roster.children()), refused);
}

EffectList LinkLegality::legalTargets(Effect *edited)
{
    EffectList targets;
    m_memory.clear();
    if (!edited)
        return targets;
    const EffectList children = m_roster.children();
    const EidIndex index(children);
    Refused refused;
    const quint32 eid = keys::eid.read(*edited);
    for (Effect *candidate : children) {
        if (candidate == edited)
            continue;
        if (m_memory.contains(eid) || examine(edited, candidate, index, refused))
            targets.append(candidate);
    }
    return targets;
}

// The walk of a recursive test with a stack of its own, so that a chain of links may be of any
// length. Only an answer of "legal" comes back to the children above: a refusal ends the walk.
bool LinkLegality::examine(Effect *edited, Effect *candidate, const EidIndex &index,
                           Refused &refused)
{
    struct Visit
    {
        Effect *child;
        bool startIsLegal = false;
        bool endIsLegal = false;
    };
    const quint32 eid = keys::eid.read(*edited);
    std::vector<Visit> visits;
    QSet<const Effect *> entered;

    // False when the target is refused at once.
    const auto enter = [&](Effect *target) {
        if (target == edited || (refused.contains(target) && !m_memory.contains(eid)))
            return false;
        // Below itself a child is not entered again, and says nothing against the link.
        if (!m_memory.contains(eid) && !entered.contains(target)) {
            visits.push_back({target});
            entered.insert(target);
        }
        return true;
    };

    bool isLegal = enter(candidate);
    while (isLegal && !visits.empty()) {
        Visit &visit = visits.back();
        if (!visit.startIsLegal) {
            visit.startIsLegal = true;
            if (Effect *target = linkTarget(keys::startRule, *visit.child, index))
                isLegal = enter(target);
        } else if (!visit.endIsLegal) {
            visit.endIsLegal = true;
            if (Effect *target = linkTarget(keys::endRule, *visit.child, index))
                isLegal = enter(target);
        } else {
            m_memory.insert(eid, edited);
            visits.pop_back();
        }
    }
    if (!isLegal) {
        for (const Visit &visit : visits)
            refused.insert(visit.child);
    }
    return isLegal;
}

} // namespace meta
