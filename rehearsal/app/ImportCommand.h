#pragma once

#include "Console.h"
#include "SequenceImport.h"

namespace rehearsal {

struct ImportRequest
{
    QString sequenceFile;
    QString outFile;
    ImportOptions options;
};

/// Turns a sequence into a show, and tells what became of its effects.
ExitStatus importToShow(const ImportRequest &request, const Show::TypeSetup &types,
                        Console &console);

} // namespace rehearsal
