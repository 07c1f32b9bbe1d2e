#pragma once

#include "EffectFactory.h"
#include "FileFault.h"
#include "StageMap.h"

#include <QList>

#include <functional>
#include <memory>

class Effect;

namespace rehearsal {

/// A show: the map of lights and groups, and the top-level effects that play on it.
class Show
{
public:
    /// Adds the effect types that a show may use to its factory.
    using TypeSetup = std::function<void(EffectFactory &)>;

    explicit Show(const TypeSetup &addTypes);
    /// Deletes the effects, then the map.
    ~Show();
    Q_DISABLE_COPY_MOVE(Show)

    StageMap &map() { return m_map; }
    const StageMap &map() const { return m_map; }
    EffectFactory &factory() { return m_factory; }

    /// Top-level effects in file order; owned by the show.
    const QList<Effect *> &effects() const { return m_effects; }
    void addEffect(Effect *effect) { m_effects.append(effect); }

    /// Every effect as loaded or imported, nested ones before what holds them. Not kept up to date
    /// with later edits.
    const std::vector<Effect *> &loadedEffects() const { return m_log.built; }
    /// Types of effects that were kept as placeholders, with their lines; each type once, at
    /// most BuildLog::maximumUnknownTypes of them.
    const std::vector<std::pair<QString, qint64>> &unknownTypes() const
    {
        return m_log.unknownTypes;
    }
    EffectFactory::BuildLog &buildLog() { return m_log; }

private:
    StageMap m_map;
    EffectFactory m_factory;
    QList<Effect *> m_effects;
    EffectFactory::BuildLog m_log;
};

} // namespace rehearsal
