#pragma once

#include <QString>

/// How the lights of a group act together. A host may hand out further values.
enum GroupTypeEnum : int {
    ChasingGroup = 1,      ///< the lights run in the group's order
    SynchronizedGroup = 2, ///< all lights show the same
    LeafGroup = 3          ///< one light
};

/// A named set of lights of the map; owned by the map.
class Group
{
public:
    QString name() const;
    /// Unique among the groups of a map; never 0, which stands for "no group".
    unsigned long uid() const;
    GroupTypeEnum groupType() const;

protected:
    Group() = default;
    ~Group() = default;
    Q_DISABLE_COPY_MOVE(Group)
};
