#pragma once

#include "EffectLib.h"

#include <QStringList>

namespace meta {

/// The effect types that the choosers offer, sorted.
inline QStringList offeredTypes(const EffectLib *effectLib)
{
    QStringList types = effectLib ? effectLib->getEffectNames() : QStringList();
    for (const char *hidden : {"Meta Effect", "Selection", "White Fade", "Text"})
        types.removeAll(QLatin1String(hidden));
    types.sort();
    return types;
}

/// What the chooser of new effects takes in besides whenever the table is rebuilt: in the host's
/// order, "White Fade" and "Text" included.
inline QStringList typesOfferedAnew(const EffectLib *effectLib)
{
    QStringList types = effectLib ? effectLib->getEffectNames() : QStringList();
    for (const char *hidden : {"Meta Effect", "Selection"})
        types.removeAll(QLatin1String(hidden));
    return types;
}

} // namespace meta
