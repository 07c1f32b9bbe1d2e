#pragma once

#include "Group.h"
#include "HostClock.h"
#include "Light.h"
#include "MapModel.h"

#include <QList>
#include <QPointF>

#include <memory>
#include <unordered_map>
#include <vector>

class EffectLib;

namespace rehearsal {

class EffectWatch;

/// A light with its place on the stage picture and what it shows in the present frame.
class StageLight final : public Light
{
public:
    /// @param place x and y in 0 ... 1, from the top left
    StageLight(quint32 uid, QString name, QPointF place);

    quint32 uid() const { return m_uid; }
    QString name() const { return m_name; }
    QPointF place() const { return m_place; }

    /// Dark, unscaled and open to every priority, as a light is at the start of a frame.
    void reset();

    /// Draws over what is there. Ignored below the light's priority; else the level becomes
    /// old x transparency + new x (1 - transparency), and the light takes the priority.
    void draw(double level, double transparency, int priority)
    {
        if (priority < m_priority)
            return;
        m_level = m_level * transparency + level * (1.0 - transparency);
        m_priority = priority;
    }

    /// What the light shows: its level times its factor.
    double shown() const { return m_level * m_factor; }
    double level() const { return m_level; }
    double factor() const { return m_factor; }
    int priority() const { return m_priority; }

private:
    friend class ::Light;

    double m_level = 0;
    double m_factor = 1;
    int m_priority = 0;
    quint32 m_uid;
    QString m_name;
    QPointF m_place;
};

class StageGroup final : public Group
{
public:
    StageGroup(quint32 uid, QString name, GroupTypeEnum type, QList<StageLight *> lights);

    /// In the group's order; owned by the map.
    const QList<StageLight *> &lights() const { return m_lights; }

private:
    friend class ::Group;

    quint32 m_uid;
    QString m_name;
    GroupTypeEnum m_type;
    QList<StageLight *> m_lights;
};

/// The map of a show: it owns the lights and groups, and knows the host's clock and factory.
class StageMap final : public MapModel
{
public:
    StageMap();
    ~StageMap();

    /// Null when the uid is taken.
    StageLight *addLight(quint32 uid, const QString &name, QPointF place);
    /// Null when the uid is 0 or taken.
    StageGroup *addGroup(quint32 uid, const QString &name, GroupTypeEnum type,
                         const QList<StageLight *> &lights);
    void removeGroup(quint32 uid);

    StageLight *light(quint32 uid) const;
    StageGroup *group(quint32 uid) const;
    /// In ascending uid.
    std::vector<StageLight *> lights() const;
    /// In ascending uid.
    std::vector<StageGroup *> groups() const;

    /// Makes every light ready for a frame.
    void resetLights();

    HostClock &clock() { return m_clock; }

    /// Effects that were made for this map and live.
    qint64 effectCount() const { return m_effectCount; }
    void countEffects(qint64 more) { m_effectCount += more; }

    /// The factory that effects made for this map find; not owned, may be null.
    EffectLib *library() const { return m_library; }
    void setLibrary(EffectLib *library) { m_library = library; }

    /// Told of what happens to the effects made for this map; not owned, may be null.
    EffectWatch *watch() const { return m_watch; }
    void setWatch(EffectWatch *watch) { m_watch = watch; }

private:
    friend class ::MapModel;

    HostClock m_clock;
    EffectLib *m_library = nullptr;
    EffectWatch *m_watch = nullptr;
    qint64 m_effectCount = 0;
    QMap<unsigned long, Light *> m_lightsByUid;
    QMap<unsigned long, Group *> m_groupsByUid;
    std::unordered_map<quint32, std::unique_ptr<StageGroup>> m_groups;
    std::unordered_map<quint32, std::unique_ptr<StageLight>> m_lights;
};

} // namespace rehearsal
