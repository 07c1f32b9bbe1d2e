#pragma once

#include "EffectLib.h"
#include "EffectText.h"

#include <functional>
#include <map>
#include <memory>

class Effect;
class MapModel;

namespace rehearsal {

class StageMap;

/// The host's effect factory: the types that a show may use, and effects built from their text.
class EffectFactory final : public EffectLib
{
public:
    using Maker = std::function<Effect *(MapModel *map)>;

    /// What building from text reports, besides the effect.
    struct BuildLog
    {
        /// Every effect built, in the order of completion: nested ones before what holds them.
        std::vector<Effect *> built;
        /// Effects of unknown types that were kept as placeholders: type and line, once a type. Of
        /// more types than the maximum, the first.
        static constexpr std::size_t maximumUnknownTypes = 100;
        std::vector<std::pair<QString, qint64>> unknownTypes;
    };

    /// Effects are made for `map`, which finds this factory as its library. Not owned.
    explicit EffectFactory(StageMap &map);
    ~EffectFactory();

    /// Adds a type, or replaces the one of that name.
    void addType(const QString &name, Maker maker);

    /// Builds an effect with all its nested ones and makes it ready with init(). Unknown types
    /// become placeholders that keep their text, which is a part of `source`. The caller owns the
    /// result.
    Effect *build(const EffectText &text, QStringView source, BuildLog *log = nullptr);

    /// Makes an effect of a type, or null.
    Effect *make(const QString &typeName);
    bool knows(const QString &typeName) const;
    QStringList typeNames() const;
    StageMap &map() { return m_map; }

private:
    Effect *makePlaceholder(const EffectText &text, QStringView source, BuildLog *log);
    void noteUnknown(const EffectText &text, BuildLog &log) const;

    StageMap &m_map;
    std::map<QString, Maker> m_makers;
};

} // namespace rehearsal
