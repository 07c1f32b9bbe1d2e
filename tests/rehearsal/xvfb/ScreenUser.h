#pragma once

#include <QImage>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

/// The keyboard, the mouse and the eyes of somebody at the display that this program runs on.
/// Everything goes through the X server, as it does for a real person.
namespace ScreenUser {

/// One key after the other, by the names that xdotool gives them: "ctrl+s".
void press(const QStringList &keys);
void type(const QString &text);
void click(QPoint place);
void moveTo(QPoint place);
/// The mouse where no window is.
void moveAway();

/// A window as the X server knows it.
using Window = qulonglong;

/// The windows of a process that are to be seen.
QList<Window> windowsOf(qint64 process);
/// Empty if the window is gone.
QString title(Window window);
QRect area(Window window);
/// Sends the keyboard there; false if it does not go there.
bool focus(Window window);

QImage picture(const QRect &area);

} // namespace ScreenUser
