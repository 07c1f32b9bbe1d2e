#pragma once

#include "CommandLine.h"
#include "Console.h"

namespace rehearsal {

/// Does what the program was called for. An application object exists.
ExitStatus run(const CommandLine &commandLine, Console &console);

} // namespace rehearsal
