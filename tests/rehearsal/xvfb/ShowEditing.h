#pragma once

#include "ProgramOnScreen.h"
#include "WindowTwin.h"

#include <QFile>

/// What a newcomer does to the example show, by mouse and keyboard.
namespace ShowEditing {

inline QByteArray exampleShow()
{
    QFile example(QStringLiteral(META_SOURCE_DIR "/examples/facade.show"));
    return example.open(QIODevice::ReadOnly) ? example.readAll() : QByteArray();
}

/// The example with another start of the child "Clock", which comes at 1.5 s; its times are not
/// resolved.
inline QByteArray exampleWithClockAt(int ms)
{
    QByteArray show = exampleShow();
    const qsizetype clock = show.indexOf(">Clock</property>");
    const QByteArray before = ">1500<";
    const qsizetype place = show.indexOf(before, clock);
    return show.replace(place, before.size(), '>' + QByteArray::number(ms) + '<');
}

/// The place of that child.
inline const QList<quint32> clock{3};

/// Selects that child, and types another start, but does not leave the field. Twin and shown
/// have the example open.
inline void typeClockStart(const ProgramOnScreen &shown, const WindowTwin &twin,
                           const QString &seconds)
{
    shown.click(twin.rowAt(QStringLiteral("Clock")));
    twin.select(QStringLiteral("Clock"));
    shown.click(twin.middleOf("m_startFixedRadioButton"));
    shown.click(twin.middleOf("m_startFixedLineEdit"));
    ScreenUser::press({QStringLiteral("ctrl+a")});
    ScreenUser::type(seconds);
}

/// Goes to a place in the show.
inline void goToSecond(const ProgramOnScreen &shown, const WindowTwin &twin, int seconds)
{
    shown.click(twin.middleOf("stage"));
    ScreenUser::moveAway();
    QStringList keys{QStringLiteral("Home")};
    keys += QStringList(seconds / 10, QStringLiteral("shift+Right"));
    keys += QStringList(seconds % 10, QStringLiteral("Right"));
    ScreenUser::press(keys);
}

} // namespace ShowEditing
