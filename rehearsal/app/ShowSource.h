#pragma once

#include "Show.h"

namespace rehearsal {

class Console;

/// Reads a show and tells, on the console, of types that it uses and nobody has. Null, and the
/// fault told, when it is not to be had.
std::unique_ptr<Show> openShow(const QString &file, const Show::TypeSetup &types, Console &console);

} // namespace rehearsal
