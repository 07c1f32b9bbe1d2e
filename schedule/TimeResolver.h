#pragma once

#include "ChildRoster.h"

#include <QSet>

#include <vector>

namespace meta {

struct RuleKeys;

/// Turns the start and end rules of the children into their "begin" and "end".
///
///     rule            begin                          end
///     fixed           fixed time                     begin + fixed duration
///     linked          target's begin or end + offset, not below 0
///     cycles                                         begin + cycle time x count
///     other codes     stays                          stays
///
/// A link target is resolved before the child that links to it, whatever the order of the list. A
/// link to an eid that no child has is broken: its rule is rewritten to fixed at 0. The walk keeps
/// its own stack, so a chain of links may be of any length. Where links form a loop, a child that
/// is met again while it is still being resolved is not entered again: the times that it holds at
/// that moment are used, and one warning a pass names it. Each pass may then give other times than
/// the one before, so from there on no pass starts inside this one, whatever a child answers to a
/// new time.
class TimeResolver
{
public:
    /// @param resolved the marks of the pass, by eid; lent, and emptied by resolveAll()
    TimeResolver(const ChildRoster &roster, ChildrenByEid &resolved)
        : m_roster(roster), m_resolved(resolved)
    {
    }

    /// A whole pass: every child in list order.
    void resolveAll();

    /// Resolves one child and what it links to, unless it is marked already. Null is ignored.
    void resolve(Effect *child);

private:
    enum class Step { StartRule, StartTarget, EndRule, EndTarget, Mark };

    struct Visit
    {
        Effect *child;
        quint32 eid;
        Step step = Step::StartRule;
        Effect *target = nullptr;
    };

    // The state of one pass. A child may answer a new time with a new cycle length, which starts a
    // pass within the pass; that one has a state of its own.
    struct Pass
    {
        EidIndex index;
        std::vector<Visit> visits = {};
        QSet<const Effect *> underWay = {};
    };

    void walk(Pass &pass, Effect *child);
    /// @param isAnew from its own visit, which found a link broken
    void enter(Pass &pass, Effect *child, bool isAnew = false);
    void followLink(Pass &pass, const RuleKeys &rule, const char *ruleName, Step afterTarget);
    static void takeTargetTime(const RuleKeys &rule, Effect &child, const Effect &target);

    const ChildRoster &m_roster;
    ChildrenByEid &m_resolved;
    bool m_metLoop = false; ///< the innermost running pass did
};

} // namespace meta
