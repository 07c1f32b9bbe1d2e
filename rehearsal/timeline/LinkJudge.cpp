#include "LinkJudge.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <utility>

namespace rehearsal {

namespace {

constexpr int nothing = -1;

/// Which siblings are in a loop together. A child needs, before its own times are known, the times
/// of those that its two links name, whichever of their ends the links mean: that is how times are
/// resolved, child by child.
class Loops
{
public:
    explicit Loops(std::vector<std::array<int, 2>> targets)
        : m_targets(std::move(targets)),
          m_order(m_targets.size(), 0),
          m_lowest(m_targets.size(), 0),
          m_loop(m_targets.size(), nothing)
    {
        for (int child = 0; child < int(m_targets.size()); ++child) {
            if (m_order[at(child)] == 0)
                walkFrom(child);
        }
    }

    bool areTogether(int a, int b) const { return m_loop[at(a)] == m_loop[at(b)]; }

private:
    // A step of a walk along the links, which may be long: it is kept here and not on the stack.
    struct Step
    {
        int child;
        int nextTarget = 0;
    };

    static std::size_t at(int child) { return std::size_t(child); }

    void enter(int child)
    {
        m_order[at(child)] = m_lowest[at(child)] = ++m_entered;
        m_open.push_back(child);
        m_walk.push_back({child});
    }

    void walkFrom(int start)
    {
        enter(start);
        while (!m_walk.empty()) {
            Step &step = m_walk.back();
            if (step.nextTarget == 2) {
                leave();
                continue;
            }
            const int child = step.child;
            const int target = m_targets[at(child)][at(step.nextTarget++)];
            if (target == nothing)
                continue;
            if (m_order[at(target)] == 0)
                enter(target);
            else if (m_loop[at(target)] == nothing)
                m_lowest[at(child)] = std::min(m_lowest[at(child)], m_order[at(target)]);
        }
    }

    // A child that reaches none that was entered before it closes a loop of all that are open.
    void leave()
    {
        const int child = m_walk.back().child;
        m_walk.pop_back();
        if (!m_walk.empty()) {
            int &lowest = m_lowest[at(m_walk.back().child)];
            lowest = std::min(lowest, m_lowest[at(child)]);
        }
        if (m_lowest[at(child)] != m_order[at(child)])
            return;
        for (int member = nothing; member != child;) {
            member = m_open.back();
            m_open.pop_back();
            m_loop[at(member)] = child;
        }
    }

    std::vector<std::array<int, 2>> m_targets; ///< of every child; or nothing
    std::vector<int> m_order;                  ///< in which children were entered; 0: not yet
    std::vector<int> m_lowest;                 ///< order of the first one that is reached
    std::vector<int> m_loop;                   ///< told by one of its members
    std::vector<int> m_open;
    std::vector<Step> m_walk;
    int m_entered = 0;
};

} // namespace

void judgeLinks(std::vector<TimelineRow> &rows, const std::vector<int> &siblings)
{
    QHash<quint32, int> byEid; // positions among the siblings
    byEid.reserve(qsizetype(siblings.size()));
    const int count = int(siblings.size());
    const auto row = [&](int sibling) -> TimelineRow & {
        return rows[std::size_t(siblings[std::size_t(sibling)])];
    };
    for (int i = 0; i < count; ++i) {
        if (!byEid.contains(row(i).eid))
            byEid.insert(row(i).eid, i);
    }

    std::vector<std::array<int, 2>> targets(siblings.size(), {nothing, nothing});
    const auto follow = [&](int sibling, Edge edge, TimelineLink &link) {
        if (link.kind == LinkKind::None)
            return;
        const auto target = byEid.constFind(link.targetEid);
        if (target == byEid.cend()) {
            link.kind = LinkKind::Broken;
            return;
        }
        link.target = siblings[std::size_t(*target)];
        targets[std::size_t(sibling)][edge == Edge::Begin ? 0 : 1] = *target;
    };
    for (int i = 0; i < count; ++i) {
        follow(i, Edge::Begin, row(i).startLink);
        follow(i, Edge::End, row(i).endLink);
    }

    const Loops loops(targets);
    const auto mark = [&](int sibling, Edge edge, TimelineLink &link) {
        const int target = targets[std::size_t(sibling)][edge == Edge::Begin ? 0 : 1];
        if (target != nothing && loops.areTogether(sibling, target))
            link.kind = LinkKind::Looping;
    };
    for (int i = 0; i < count; ++i) {
        mark(i, Edge::Begin, row(i).startLink);
        mark(i, Edge::End, row(i).endLink);
    }
}

} // namespace rehearsal
