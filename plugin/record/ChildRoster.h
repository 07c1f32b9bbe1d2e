#pragma once

#include "EffectList.h"

#include <QHash>
#include <QString>

class Effect;

namespace meta {

/// Children found by their eid. One dictionary serves the marks of a resolution pass and, between
/// passes, the memory of the link test; each empties it before it starts.
using ChildrenByEid = QHash<quint32, Effect *>;

/// The children of one meta effect, which of them are selected or offered as link targets, which
/// way the editor lists them, and the numbers for the next one. The children are owned from the
/// roster's destruction on: it deletes them.
class ChildRoster
{
public:
    ChildRoster() = default;
    ~ChildRoster();
    Q_DISABLE_COPY_MOVE(ChildRoster)

    /// In the host's order.
    const EffectList &children() const { return m_children; }
    EffectList &selection() { return m_selection; }
    /// The children that the choosers of link targets offer: entry i of a list is the child shown
    /// as item i.
    EffectList &startLinkCandidates() { return m_startLinkCandidates; }
    EffectList &endLinkCandidates() { return m_endLinkCandidates; }

    /// Turns the way in which the editor sorts, whichever editor that is.
    /// @return whether it is ascending now, as it is after the first turn
    bool turnSortOrder()
    {
        m_isSortAscending = !m_isSortAscending;
        return m_isSortAscending;
    }

    /// Takes the child in at its place.
    void insert(Effect *child) { m_children.inSort(child); }
    /// Raises the next eid past the child's. An eid of 4294967295 makes the next one 0.
    void raiseNextEid(const Effect &child);
    /// Forgets the child, selected or not; it is the caller's then. What the choosers offer is
    /// forgotten with it, because its place among the items is gone.
    void remove(const Effect *child);
    void sort() { m_children.sort(); }

    /// The first child, in list order, with that eid; null if there is none.
    Effect *find(quint32 eid) const;

    quint32 nextEid() const { return m_nextEid; }
    /// The number for the next new child's name.
    quint32 takeNameNumber() { return m_nextNameNumber++; }
    void restartNameNumbers() { m_nextNameNumber = static_cast<quint32>(m_children.count()) + 1; }

private:
    EffectList m_children;
    EffectList m_selection;
    EffectList m_startLinkCandidates;
    EffectList m_endLinkCandidates;
    bool m_isSortAscending = false;
    quint32 m_nextEid = 0;
    quint32 m_nextNameNumber = 1;
};

/// Finds the first child, in list order, by eid, from the eids as they are when the index is made.
class EidIndex
{
public:
    explicit EidIndex(const EffectList &children);

    /// Null if there is none.
    Effect *find(quint32 eid) const { return m_first.value(eid); }

private:
    ChildrenByEid m_first;
};

} // namespace meta
