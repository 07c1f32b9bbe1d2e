#pragma once

#include "FileFault.h"
#include "Show.h"

#include <optional>

namespace rehearsal {

/// The types that shows may use: the host's own and the plug-in's.
/// @param pluginFile the plug-in's library; empty: the one beside the program, or in ../lib
/// Nothing and a fault when the plug-in is not to be had.
std::optional<Show::TypeSetup> loadTypes(const QString &pluginFile, FileFault *fault);

} // namespace rehearsal
