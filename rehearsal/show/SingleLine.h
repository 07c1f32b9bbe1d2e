#pragma once

#include <QString>

namespace rehearsal {

/// The text with every control character and line break turned into a blank.
QString singleLine(QString text);

} // namespace rehearsal
