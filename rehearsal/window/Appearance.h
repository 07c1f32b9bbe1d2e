#pragma once

#include <QString>

namespace rehearsal {

/// Which palette the program's windows have.
enum class Appearance {
    System, ///< the desktop's own
    Light,
    Dark
};

/// Gives the whole program that look, at once.
void applyAppearance(Appearance appearance);

/// "system", "light" or "dark", as it is kept in the settings.
QString appearanceName(Appearance appearance);
/// System for any other name.
Appearance appearanceNamed(const QString &name);

} // namespace rehearsal
