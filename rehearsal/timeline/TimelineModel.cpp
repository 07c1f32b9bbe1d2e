#include "TimelineModel.h"

#include "EffectHost.h"
#include "LanePacking.h"
#include "LinkJudge.h"

#include <algorithm>

namespace rehearsal {

namespace {

enum RuleCode : unsigned long { FixedRule = 0, LinkedRule = 1, CyclesRule = 2 };

// A mark of no length is drawn as wide as this part of the whole.
constexpr qint64 marksInLength = 150;

// Counted texts are found faster than literals.
struct Keys
{
    QString eid = QStringLiteral("eid");
    QString name = QStringLiteral("name");
    QString type = QStringLiteral("type");
    QString startType = QStringLiteral("starttype");
    QString startLinkEid = QStringLiteral("startlinkeid");
    QString startLinkStart = QStringLiteral("startlinkstart");
    QString startLinkOffset = QStringLiteral("startlinkoffset");
    QString endType = QStringLiteral("endtype");
    QString endLinkEid = QStringLiteral("endlinkeid");
    QString endLinkStart = QStringLiteral("endlinkstart");
    QString endLinkOffset = QStringLiteral("endlinkoffset");
};

const Keys &keys()
{
    static const Keys instance;
    return instance;
}

TimelineLink readLink(const Effect &effect, const QString &eid, const QString &start,
                      const QString &offset)
{
    TimelineLink link;
    link.kind = LinkKind::Sound; // until it is judged
    link.targetEid = quint32(effect.getPropertyULong(eid));
    link.targetEdge = effect.getPropertyBool(start) ? Edge::Begin : Edge::End;
    link.offsetMs = effect.getPropertyDouble(offset);
    return link;
}

TimelineRow readRow(Effect &effect)
{
    TimelineRow row;
    row.effect = &effect;
    row.eid = quint32(effect.getPropertyULong(keys().eid));
    row.name = effect.getPropertyString(keys().name);
    row.type = effect.getPropertyString(keys().type);
    row.begin = effect.beginTime();
    row.end = effect.endTime();
    row.fadeIn = effect.fadeInTime();
    row.fadeOut = effect.fadeOutTime();
    row.holdsEffects = EffectHost::holdsEffects(effect);
    if (effect.getPropertyULong(keys().startType) == LinkedRule)
        row.startLink =
            readLink(effect, keys().startLinkEid, keys().startLinkStart, keys().startLinkOffset);
    const unsigned long endType = effect.getPropertyULong(keys().endType);
    row.endFollowsBegin = endType == FixedRule || endType == CyclesRule;
    if (endType == LinkedRule)
        row.endLink =
            readLink(effect, keys().endLinkEid, keys().endLinkStart, keys().endLinkOffset);
    return row;
}

} // namespace

void TimelineModel::rebuild(Effect *top)
{
    m_rows.clear();
    m_shown.clear();
    m_laneStarts.clear();
    m_laneDepths.clear();
    m_length = 0;
    m_ownLength = 0;
    m_title.clear();
    if (!top)
        return;
    m_ownLength = std::max(0LL, qint64{top->endTime()} - qint64{top->beginTime()});
    m_title = top->getPropertyString(keys().name);
    addChildren(*top, -1);
}

void TimelineModel::foldAll()
{
    m_unfolded.clear();
    for (TimelineRow &row : m_rows)
        row.isUnfolded = false;
}

void TimelineModel::addChildren(Effect &holder, int holderRow)
{
    const std::vector<Effect *> effects = EffectHost::nested(holder);
    std::vector<int> siblings;
    siblings.reserve(effects.size());
    const qint64 origin = holderRow < 0 ? 0 : row(holderRow).begin;
    const int depth = holderRow < 0 ? 0 : row(holderRow).depth + 1;
    for (Effect *effect : effects) {
        const int index = int(m_rows.size());
        siblings.push_back(index);
        m_rows.push_back(readRow(*effect));
        TimelineRow &added = m_rows.back();
        added.holder = holderRow;
        added.depth = depth;
        added.begin += origin;
        added.end += origin;
        if (added.holdsEffects) {
            added.isUnfolded = !m_unfolded.isEmpty() && m_unfolded.contains(path(index));
            addChildren(*effect, index);
        }
        m_rows[std::size_t(index)].next = int(m_rows.size());
    }
    judgeLinks(m_rows, siblings);
}

void TimelineModel::layOut(bool packed)
{
    m_laneDepths.clear();
    m_shown.clear();
    m_laneStarts.clear();
    for (TimelineRow &row : m_rows)
        row.lane = -1;
    layOutRange(0, int(m_rows.size()), packed);

    m_length = m_ownLength;
    m_laneStarts.assign(m_laneDepths.size() + 1, 0);
    for (const TimelineRow &row : m_rows) {
        if (row.lane < 0)
            continue;
        m_length = std::max({m_length, row.begin, row.end});
        ++m_laneStarts[std::size_t(row.lane) + 1];
    }
    for (std::size_t lane = 1; lane < m_laneStarts.size(); ++lane)
        m_laneStarts[lane] += m_laneStarts[lane - 1];
    m_shown.resize(m_laneStarts.back());
    std::vector<std::size_t> places = m_laneStarts;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].lane >= 0)
            m_shown[places[std::size_t(m_rows[i].lane)]++] = int(i);
    }
    if (!packed)
        return;
    for (std::size_t lane = 0; lane + 1 < m_laneStarts.size(); ++lane) {
        std::stable_sort(
            m_shown.begin() + std::ptrdiff_t(m_laneStarts[lane]),
            m_shown.begin() + std::ptrdiff_t(m_laneStarts[lane + 1]),
            [this](int left, int right) { return row(left).begin < row(right).begin; });
    }
}

// Siblings and what they hold: the rows from `first` to before `last`.
void TimelineModel::layOutRange(int first, int last, bool packed)
{
    std::vector<int> siblings;
    std::vector<LaneSpan> spans;
    qint64 end = m_ownLength;
    for (int index = first; index < last; index = row(index).next) {
        siblings.push_back(index);
        spans.push_back({row(index).begin, row(index).end});
        end = std::max(end, row(index).end);
    }
    if (!packed) {
        for (const int sibling : siblings) {
            layOutOne(sibling, laneCount());
            if (row(sibling).isUnfolded)
                layOutRange(sibling + 1, row(sibling).next, packed);
        }
        return;
    }

    const std::vector<int> lanes = packLanes(spans, end / marksInLength);
    std::vector<std::vector<int>> byLane;
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        const auto lane = std::size_t(lanes[i]);
        if (lane >= byLane.size())
            byLane.resize(lane + 1);
        byLane[lane].push_back(siblings[i]);
    }
    for (const std::vector<int> &together : byLane) {
        const int lane = laneCount();
        for (const int sibling : together)
            layOutOne(sibling, lane);
        for (const int sibling : together) {
            if (row(sibling).isUnfolded)
                layOutRange(sibling + 1, row(sibling).next, packed);
        }
    }
}

void TimelineModel::layOutOne(int row, int lane)
{
    TimelineRow &placed = m_rows[std::size_t(row)];
    placed.lane = lane;
    if (lane == laneCount())
        m_laneDepths.push_back(placed.depth);
}

std::size_t TimelineModel::firstOfLane(int lane) const
{
    if (lane < 0 || m_laneStarts.empty())
        return 0;
    return lane < laneCount() ? m_laneStarts[std::size_t(lane)] : m_shown.size();
}

EidPath TimelineModel::path(int row) const
{
    EidPath path;
    for (; row >= 0; row = this->row(row).holder)
        path.prepend(this->row(row).eid);
    return path;
}

int TimelineModel::find(const EidPath &path) const
{
    int found = -1;
    int first = 0;
    int last = int(m_rows.size());
    for (const quint32 eid : path) {
        for (found = first; found < last && row(found).eid != eid;)
            found = row(found).next;
        if (found >= last)
            return -1;
        first = found + 1;
        last = row(found).next;
    }
    return found;
}

void TimelineModel::setUnfolded(int row, bool unfolded)
{
    TimelineRow &changed = m_rows[std::size_t(row)];
    if (!changed.holdsEffects || changed.isUnfolded == unfolded)
        return;
    changed.isUnfolded = unfolded;
    if (unfolded)
        m_unfolded.insert(path(row));
    else
        m_unfolded.remove(path(row));
}

} // namespace rehearsal
