#pragma once

#include <QStringList>

#include <optional>

// The system's own side of FileDialogs.

/// @return the index of the pressed button
int mac_warningDialog(const QString &caption, const QString &text, const QString &button0,
                      const QString &button1, const QString &button2);

namespace meta {

enum class Choosing { File, Files, Directory };

/// @param fileTypes suffixes, with a single blank between two
/// @return empty if the user cancelled
QStringList runOpenPanel(const QString &fileTypes, Choosing choosing);

/// @return empty if the user cancelled
QString runSavePanel();

/// The index of the button with which an alert ended.
int alertButton(long result);

/// What the system says of itself; nothing if it does not know the selector.
std::optional<qint32> askSystem(quint32 selector);

} // namespace meta
