#pragma once

#include <QIcon>

namespace rehearsal {

/// The program's icon, in every size from 16 to 256 pixels.
QIcon programIcon();

} // namespace rehearsal
