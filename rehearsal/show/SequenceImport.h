#pragma once

#include "Show.h"

#include <functional>
#include <map>

namespace rehearsal {

struct ImportOptions
{
    /// Link an effect that starts exactly where the previous one of its layer ends to that end.
    bool linkAdjacent = false;
};

struct ImportSummary
{
    int lights = 0;
    int effects = 0;
    int linked = 0;
    /// Effects of types that have no counterpart here, by their name in the sequence.
    std::map<QString, int> replaced;
};

/// Told now and then how much of an import is done, 0 ... 100 percent; false cancels it.
using ImportProgress = std::function<bool(int percent)>;

/// Turns a sequence (.xsq) into a show: one meta effect that plays once and holds every effect of
/// every model, timed as in the file. Null and a fault when the file cannot be read, is not a sound
/// sequence, or a needed effect type is missing. `summary` is written on success only. Null and a
/// fault without a `what` when `progress`, which may be empty, cancelled the import.
std::unique_ptr<Show> importSequence(const QString &file, const Show::TypeSetup &addTypes,
                                     ImportOptions options, ImportSummary *summary,
                                     FileFault *fault, const ImportProgress &progress = {});

/// The same from text; `name` stands for the file in a fault.
std::unique_ptr<Show> parseSequence(const QByteArray &text, const QString &name,
                                    const Show::TypeSetup &addTypes, ImportOptions options,
                                    ImportSummary *summary, FileFault *fault,
                                    const ImportProgress &progress = {});

} // namespace rehearsal
