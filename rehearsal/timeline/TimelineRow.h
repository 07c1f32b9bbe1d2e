#pragma once

#include "Effect.h"

#include <QPointer>
#include <QString>

namespace rehearsal {

/// One of the two ends of a child's span.
enum class Edge { Begin, End };

enum class LinkKind {
    None,   ///< the time is not linked
    Sound,  ///< a sibling has the eid that the link names
    Broken, ///< no sibling has it
    Looping ///< the time depends on itself through this link
};

/// A rule that takes a child's begin or end from a sibling.
struct TimelineLink
{
    LinkKind kind = LinkKind::None;
    quint32 targetEid = 0;
    int target = -1; ///< row of the first sibling with that eid; -1 if there is none
    Edge targetEdge = Edge::End;
    double offsetMs = 0; ///< signed, not always whole

    bool isFaulty() const { return kind == LinkKind::Broken || kind == LinkKind::Looping; }
};

/// A child at any depth below the effect that the timeline shows, as it was when the model was
/// made. Times are ms from the start of that effect.
struct TimelineRow
{
    QPointer<Effect> effect; ///< null once it was deleted
    int holder = -1;         ///< row of the effect that holds it; -1 for the shown effect itself
    int next = 0;            ///< first row behind it and everything that it holds
    int depth = 0;
    quint32 eid = 0;
    QString name;
    QString type;
    qint64 begin = 0;
    qint64 end = 0; ///< may lie before begin, in damaged files
    quint32 fadeIn = 0;
    quint32 fadeOut = 0;
    bool holdsEffects = false;
    bool isUnfolded = false;
    bool endFollowsBegin = false; ///< its end is its begin and a duration
    TimelineLink startLink;
    TimelineLink endLink;
    int lane = -1; ///< from the top; -1 while it is folded away

    qint64 duration() const { return end > begin ? end - begin : 0; }
    const TimelineLink &link(Edge edge) const { return edge == Edge::Begin ? startLink : endLink; }
};

} // namespace rehearsal
