#include "ScreenUser.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QScreen>

namespace {

// What it prints; empty if it fails, as it does when a window goes meanwhile.
QString xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    const bool isDone = process.waitForFinished(60000)
                        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isDone ? QString::fromUtf8(process.readAllStandardOutput()).trimmed() : QString();
}

} // namespace

void ScreenUser::press(const QStringList &keys)
{
    xdotool(QStringList{QStringLiteral("key")} + keys);
}

void ScreenUser::type(const QString &text)
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"),
             QStringLiteral("--"), text});
}

void ScreenUser::click(QPoint place)
{
    xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
             QStringLiteral("click"), QStringLiteral("1")});
}

void ScreenUser::moveTo(QPoint place)
{
    xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
}

void ScreenUser::moveAway()
{
    moveTo(QGuiApplication::primaryScreen()->geometry().bottomRight());
}

QList<ScreenUser::Window> ScreenUser::windowsOf(qint64 process)
{
    const QStringList numbers = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                         QStringLiteral("--pid"), QString::number(process)})
                                    .split(u'\n', Qt::SkipEmptyParts);
    QList<Window> windows;
    for (const QString &number : numbers)
        windows.append(number.toULongLong());
    return windows;
}

QString ScreenUser::title(Window window)
{
    return xdotool({QStringLiteral("getwindowname"), QString::number(window)});
}

QRect ScreenUser::area(Window window)
{
    QRect area;
    const QStringList lines = xdotool({QStringLiteral("getwindowgeometry"),
                                       QStringLiteral("--shell"), QString::number(window)})
                                  .split(u'\n');
    for (const QString &line : lines) {
        const int value = line.section(u'=', 1).toInt();
        if (line.startsWith(u"X="))
            area.moveLeft(value);
        else if (line.startsWith(u"Y="))
            area.moveTop(value);
        else if (line.startsWith(u"WIDTH="))
            area.setWidth(value);
        else if (line.startsWith(u"HEIGHT="))
            area.setHeight(value);
    }
    return area;
}

bool ScreenUser::focus(Window window)
{
    const QString number = QString::number(window);
    xdotool({QStringLiteral("windowfocus"), number});
    return xdotool({QStringLiteral("getwindowfocus")}) == number;
}

QImage ScreenUser::picture(const QRect &area)
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}
