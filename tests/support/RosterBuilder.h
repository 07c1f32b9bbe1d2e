#pragma once

#include "ChildRoster.h"
#include "StubEffect.h"

#include <utility>
#include <vector>

/// A start or an end rule as properties, by their keys without the "start" or "end" in front.
using Rule = std::vector<std::pair<QString, QString>>;

/// A start at that time, or an end that long after the begin.
Rule fixed(quint32 ms);
Rule toStartOf(quint32 eid, double offsetMs = 0);
Rule toEndOf(quint32 eid, double offsetMs = 0);
Rule cycles(quint32 count);
/// A rule of that code and nothing else.
Rule ofCode(const QString &code);

/// Children of one parent, in the order in which they are added, and the dictionary that goes with
/// them.
class RosterBuilder
{
public:
    /// The roster owns the child. Its `changes` are those after this call.
    StubEffect &add(quint32 eid, const Rule &start = {}, const Rule &end = {});

    StubEffect &at(int index) const;
    /// "eid: begin - end" of every child, in list order, as it is stored.
    QStringList times() const;

    meta::ChildRoster roster;
    meta::ChildrenByEid dictionary;
};
