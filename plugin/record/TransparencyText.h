#pragma once

#include <QString>

namespace meta {

/// A transparency as it is stored: exactly QString::number(value, 'g', 3).
///
/// The texts of 0.01 ... 1 are made once and shared, because a fade asks for one in every frame.
QString transparencyText(double transparency);

} // namespace meta
