#pragma once

#include <QMap>

class Group;
class Light;

/// The host's map of lights and light groups. It owns both, and outlives every effect made for it.
class MapModel
{
public:
    /// The group with that uid, or null.
    Group *getGroup(unsigned long gid) const;

    /// Every group, keyed by uid and walked in ascending uid.
    QMap<unsigned long, Group *> getGroups() const;

    /// Every light, keyed by uid and walked in ascending uid.
    QMap<unsigned long, Light *> getLights() const;

protected:
    MapModel() = default;
    ~MapModel() = default;
    Q_DISABLE_COPY_MOVE(MapModel)
};
