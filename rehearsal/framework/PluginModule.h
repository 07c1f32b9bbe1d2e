#pragma once

#include "FileFault.h"

#include <QString>

#include <optional>

class Effect;
class MapModel;

namespace rehearsal {

class EffectFactory;

/// An effect plug-in: a shared library that exports the unmangled function `createEffect`. A loaded
/// module stays loaded until the program ends.
class PluginModule
{
public:
    using CreateEffect = Effect *(*)(MapModel *, unsigned long);

    /// Loads the library; a fault says why it is not to be had.
    static std::optional<PluginModule> load(const QString &file, FileFault *fault);

    /// Makes an effect of the plug-in's type; the caller owns it. Null if the plug-in fails.
    Effect *create(MapModel *map) const;

    /// Adds the plug-in's type to a factory, under the name that its effects give as their type.
    void addTo(EffectFactory &factory) const;

private:
    explicit PluginModule(CreateEffect createEffect) : m_createEffect(createEffect) {}

    CreateEffect m_createEffect;
};

} // namespace rehearsal
