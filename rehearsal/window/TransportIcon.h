#pragma once

#include <QIcon>

namespace rehearsal {

enum class TransportSymbol { Play, Pause, Stop, Restart, Loop };

/// A symbol in the palette's colour of the moment, sharp in any size.
QIcon transportIcon(TransportSymbol symbol);

} // namespace rehearsal
