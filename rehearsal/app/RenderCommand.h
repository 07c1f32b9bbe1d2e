#pragma once

#include "Console.h"
#include "Show.h"

#include <optional>

namespace rehearsal {

struct RenderRequest
{
    QString showFile;
    double fps = 40;
    std::optional<quint32> lengthMs; ///< one run of the longest effect if absent
    QString tableFile;               ///< empty: no table
    QString pictureFile;             ///< empty: no picture
};

/// Plays a show in simulated time from midnight on, and writes what its lights show.
ExitStatus render(const RenderRequest &request, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
