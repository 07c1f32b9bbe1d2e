#pragma once

#include "ChildRoster.h"

#include <QSet>

namespace meta {

/// Tells to which siblings a child may be linked without closing a loop of links.
///
/// The test follows a candidate's links, start before end, and refuses the candidate when it
/// reaches the edited child. It is exact only up to the first legal answer of a series: that answer
/// enters the edited child into the shared dictionary, and while the edited child is found there
/// every other candidate but the edited child itself is legal without being examined. The choosers
/// rely on this. The dictionary is emptied by whoever starts a series.
class LinkLegality
{
public:
    /// @param memory the shared dictionary; lent
    LinkLegality(const ChildRoster &roster, ChildrenByEid &memory)
        : m_roster(roster), m_memory(memory)
    {
    }

    /// May `edited` take `candidate` as the target of a link, of its start or of its end? False
    /// when they are the same or either is null.
    bool legalToLink(Effect *edited, Effect *candidate);

    /// Starts a series and asks about every child in list order: the legal ones, in that order.
    EffectList legalTargets(Effect *edited);

private:
    /// Children below which the edited child was met. Valid within one series, for as long as the
    /// edited child is not in the memory.
    using Refused = QSet<const Effect *>;

    bool examine(Effect *edited, Effect *candidate, const EidIndex &index, Refused &refused);

    const ChildRoster &m_roster;
    ChildrenByEid &m_memory;
};

} // namespace meta
