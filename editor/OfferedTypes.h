#pragma once

#include "EffectLib.h"

#include <QStringList>

namespace meta {

/// All effect types of the host, in its order. Null has none.
inline QStringList hostTypes(const EffectLib *effectLib)
{
    return effectLib ? effectLib->getEffectNames() : QStringList();
}

/// The effect types that the choosers offer, of all that the host has: sorted.
inline QStringList offeredTypes(QStringList types)
{
    for (const char *hidden : {"Meta Effect", "Selection", "White Fade", "Text"})
        types.removeAll(QLatin1String(hidden));
    types.sort();
    return types;
}

/// What the chooser of new effects takes in besides whenever the table is rebuilt: in the host's
/// order, "White Fade" and "Text" included.
inline QStringList typesOfferedAnew(QStringList types)
{
    for (const char *hidden : {"Meta Effect", "Selection"})
        types.removeAll(QLatin1String(hidden));
    return types;
}

} // namespace meta
