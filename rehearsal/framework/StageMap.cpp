#include "StageMap.h"

#include <algorithm>
#include <utility>

using rehearsal::StageGroup;
using rehearsal::StageLight;
using rehearsal::StageMap;

// --- What host/ declares ---

void Light::setBrightness(double brightness)
{
    // Not a number is dark.
    static_cast<StageLight *>(this)->m_factor = brightness > 0.0 ? std::min(brightness, 1.0) : 0.0;
}

void Light::setPriority(int priority)
{
    static_cast<StageLight *>(this)->m_priority = priority;
}

QString Group::name() const
{
    return static_cast<const StageGroup *>(this)->m_name;
}

unsigned long Group::uid() const
{
    return static_cast<const StageGroup *>(this)->m_uid;
}

GroupTypeEnum Group::groupType() const
{
    return static_cast<const StageGroup *>(this)->m_type;
}

Group *MapModel::getGroup(unsigned long gid) const
{
    if (!std::in_range<quint32>(gid))
        return nullptr;
    return static_cast<const StageMap *>(this)->group(static_cast<quint32>(gid));
}

QMap<unsigned long, Group *> MapModel::getGroups() const
{
    return static_cast<const StageMap *>(this)->m_groupsByUid;
}

QMap<unsigned long, Light *> MapModel::getLights() const
{
    return static_cast<const StageMap *>(this)->m_lightsByUid;
}

// --- The stage ---

namespace rehearsal {

StageLight::StageLight(quint32 uid, QString name, QPointF place)
    : m_uid(uid), m_name(std::move(name)), m_place(place)
{
}

void StageLight::reset()
{
    m_level = 0;
    m_factor = 1;
    m_priority = 0;
}

StageGroup::StageGroup(quint32 uid, QString name, GroupTypeEnum type, QList<StageLight *> lights)
    : m_uid(uid), m_name(std::move(name)), m_type(type), m_lights(std::move(lights))
{
}

StageMap::StageMap() = default;
StageMap::~StageMap() = default;

StageLight *StageMap::addLight(quint32 uid, const QString &name, QPointF place)
{
    auto [position, isNew] = m_lights.try_emplace(uid);
    if (!isNew)
        return nullptr;
    position->second = std::make_unique<StageLight>(uid, name, place);
    m_lightsByUid.insert(uid, position->second.get());
    return position->second.get();
}

StageGroup *StageMap::addGroup(quint32 uid, const QString &name, GroupTypeEnum type,
                               const QList<StageLight *> &lights)
{
    if (uid == 0)
        return nullptr;
    auto [position, isNew] = m_groups.try_emplace(uid);
    if (!isNew)
        return nullptr;
    position->second = std::make_unique<StageGroup>(uid, name, type, lights);
    m_groupsByUid.insert(uid, position->second.get());
    return position->second.get();
}

void StageMap::removeGroup(quint32 uid)
{
    m_groupsByUid.remove(uid);
    m_groups.erase(uid);
}

StageLight *StageMap::light(quint32 uid) const
{
    const auto found = m_lights.find(uid);
    return found == m_lights.end() ? nullptr : found->second.get();
}

StageGroup *StageMap::group(quint32 uid) const
{
    const auto found = m_groups.find(uid);
    return found == m_groups.end() ? nullptr : found->second.get();
}

std::vector<StageLight *> StageMap::lights() const
{
    std::vector<StageLight *> lights;
    lights.reserve(m_lights.size());
    for (Light *light : m_lightsByUid)
        lights.push_back(static_cast<StageLight *>(light));
    return lights;
}

std::vector<StageGroup *> StageMap::groups() const
{
    std::vector<StageGroup *> groups;
    groups.reserve(m_groups.size());
    for (Group *group : m_groupsByUid)
        groups.push_back(static_cast<StageGroup *>(group));
    return groups;
}

void StageMap::resetLights()
{
    for (const auto &[uid, light] : m_lights)
        light->reset();
}

} // namespace rehearsal
