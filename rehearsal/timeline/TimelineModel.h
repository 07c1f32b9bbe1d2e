#pragma once

#include "TimelineRow.h"

#include <QList>
#include <QSet>

#include <vector>

namespace rehearsal {

/// Eids from a child of the shown effect down to a nested child.
using EidPath = QList<quint32>;

/// What the timeline of one effect shows: every child at every depth, its links, and the lanes of
/// the children that are not folded away. Children with one path are told apart by nothing: the
/// first counts.
class TimelineModel
{
public:
    /// Reads the effect anew; null empties. What was unfolded stays so, by path. Lanes are to be
    /// laid out again.
    void rebuild(Effect *top);
    /// Folds everything.
    void foldAll();

    /// Gives lanes to what is not folded away: one each in the effect's order, or as few as do
    /// without overlaps. What an effect holds gets lanes of its own below it.
    void layOut(bool packed);

    /// In the order of the effects; what an effect holds stands behind it.
    const std::vector<TimelineRow> &rows() const { return m_rows; }
    const TimelineRow &row(int index) const { return m_rows[std::size_t(index)]; }
    /// Rows that have a lane, from lane to lane and in a lane by their begins.
    const std::vector<int> &shown() const { return m_shown; }
    /// Position in shown() of the first row of this lane or a later one.
    std::size_t firstOfLane(int lane) const;
    int laneCount() const { return int(m_laneDepths.size()); }
    /// How deep the children of the lane are nested.
    int laneDepth(int lane) const { return m_laneDepths[std::size_t(lane)]; }

    /// The end of the last shown child, or of the effect itself if that is later, ms.
    qint64 length() const { return m_length; }
    /// The effect's name.
    const QString &title() const { return m_title; }
    /// The effect's own end, ms; 0 for none.
    qint64 ownLength() const { return m_ownLength; }

    EidPath path(int row) const;
    /// -1 if there is no such child.
    int find(const EidPath &path) const;
    /// Takes effect with the next layOut(). Nothing but an effect that holds effects unfolds.
    void setUnfolded(int row, bool unfolded);

private:
    void addChildren(Effect &holder, int holderRow);
    void layOutRange(int first, int last, bool packed);
    void layOutOne(int row, int lane);

    std::vector<TimelineRow> m_rows;
    std::vector<int> m_shown;
    std::vector<std::size_t> m_laneStarts;
    std::vector<int> m_laneDepths;
    QSet<EidPath> m_unfolded;
    QString m_title;
    qint64 m_length = 0;
    qint64 m_ownLength = 0;
};

} // namespace rehearsal
