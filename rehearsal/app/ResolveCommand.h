#pragma once

#include "Console.h"
#include "Show.h"

namespace rehearsal {

struct ResolveRequest
{
    QString showFile;
    QString outFile;
};

/// Computes the times of every effect that holds others, innermost first, and saves the show.
ExitStatus resolve(const ResolveRequest &request, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
