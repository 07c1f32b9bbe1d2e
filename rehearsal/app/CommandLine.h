#pragma once

#include "ImportCommand.h"
#include "InspectCommand.h"
#include "RenderCommand.h"
#include "ResolveCommand.h"
#include "WindowCommand.h"

#include <QStringList>

#include <optional>
#include <variant>

namespace rehearsal {

/// Something to be printed, and nothing else to be done.
struct TextRequest
{
    QString text;
};

/// What the program was called for.
struct CommandLine
{
    bool showsDebugLines = false;
    QString pluginFile; ///< empty: the one that belongs to the program
    std::variant<TextRequest, WindowRequest, RenderRequest, InspectRequest, ResolveRequest,
                 ImportRequest>
        request;
};

/// Nothing and a fault, in one line, when the arguments make no sense.
/// @param arguments the program's name first
std::optional<CommandLine> parseCommandLine(const QStringList &arguments, QString *fault);

} // namespace rehearsal
