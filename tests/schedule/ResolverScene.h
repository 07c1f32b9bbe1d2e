#pragma once

#include "LogCapture.h"
#include "RosterBuilder.h"
#include "TimeResolver.h"

/// Children and the resolver that works on them.
class ResolverScene : public RosterBuilder
{
public:
    /// A whole pass; its debug lines.
    QStringList pass()
    {
        const LogCapture log(QtDebugMsg);
        resolver.resolveAll();
        return log.lines();
    }
    /// One child; the debug lines.
    QStringList resolve(Effect *child)
    {
        const LogCapture log(QtDebugMsg);
        resolver.resolve(child);
        return log.lines();
    }

    meta::TimeResolver resolver{roster, dictionary};
};
