#pragma once

#include "ChildKeys.h"
#include "LogCapture.h"
#include "MetaStage.h"

/// The saved text of every child, in list order, with its eid before it.
inline QStringList savedChildren(const MetaEffect &effect)
{
    QStringList texts;
    const EffectList children = effect.getEffects();
    for (Effect *child : children)
        texts.append(meta::keys::eid.readText(*child) + u' ' + savedText(*child));
    return texts;
}

/// How many resolution passes the captured debug lines tell of.
inline int passesIn(const LogCapture &debugLines)
{
    return static_cast<int>(
        debugLines.lines().count(QStringLiteral("MetaEffect::updateEffectTimes()")));
}
