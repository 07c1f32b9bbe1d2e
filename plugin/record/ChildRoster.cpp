#include "ChildRoster.h"

#include "ChildKeys.h"

namespace meta {

ChildRoster::~ChildRoster()
{
    m_children.setAutoDelete(true);
}

void ChildRoster::raiseNextEid(const Effect &child)
{
    const quint32 eid = keys::eid.read(child);
    if (eid >= m_nextEid)
        m_nextEid = eid + 1;
}

void ChildRoster::remove(const Effect *child)
{
    m_children.remove(child);
    m_selection.remove(child);
    m_startLinkCandidates.clear();
    m_endLinkCandidates.clear();
}

Effect *ChildRoster::find(quint32 eid) const
{
    const EffectList children = m_children;
    for (Effect *child : children) {
        if (keys::eid.read(*child) == eid)
            return child;
    }
    return nullptr;
}

EidIndex::EidIndex(const EffectList &children)
{
    m_first.reserve(children.count());
    for (Effect *child : children) {
        const quint32 eid = keys::eid.read(*child);
        if (!m_first.contains(eid))
            m_first.insert(eid, child);
    }
}

} // namespace meta
