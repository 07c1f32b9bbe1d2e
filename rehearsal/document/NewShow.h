#pragma once

#include <QByteArray>

namespace rehearsal {

/// The text of the show to start with: a grid of 5 x 8 lights, groups of it, and one meta effect
/// without children. UTF-8.
QByteArray newShowText();

} // namespace rehearsal
