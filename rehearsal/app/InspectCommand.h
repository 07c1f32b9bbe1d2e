#pragma once

#include "Console.h"
#include "Show.h"

namespace rehearsal {

struct InspectRequest
{
    QString showFile;
    bool asJson = false;
};

/// Prints the tree of a show's effects as they are when loaded: an effect a line, or as JSON an
/// array of objects of properties, each with the array "children".
ExitStatus inspect(const InspectRequest &request, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
