#pragma once

#include "Console.h"
#include "Show.h"
#include "ShowRender.h"

namespace rehearsal {

struct RenderRequest : RenderPlan
{
    QString showFile;
};

/// Plays a show in simulated time from midnight on, and writes what its lights show.
ExitStatus render(const RenderRequest &request, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
