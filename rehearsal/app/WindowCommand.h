#pragma once

#include "Console.h"
#include "Show.h"

namespace rehearsal {

struct WindowRequest
{
    QString showFile; ///< empty: a new show
};

/// Whether a window can be opened, as far as the environment tells.
bool hasDisplay();

/// Opens the window, and returns when the user has closed it.
ExitStatus openWindow(const WindowRequest &request, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
