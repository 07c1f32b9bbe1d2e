#include "WindowCommand.h"

#include "EndingSignals.h"
#include "MainWindow.h"
#include "ProgramIcon.h"
#include "ShowSource.h"

#include <QApplication>
#include <QGuiApplication>

#include <algorithm>
#include <array>

namespace rehearsal {

bool hasDisplay()
{
    // As the program was started: it may choose a platform itself later.
    static const bool isThere = [] {
        constexpr std::array variables{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
        return std::any_of(variables.begin(), variables.end(),
                           [](const char *name) { return !qEnvironmentVariableIsEmpty(name); });
    }();
    return isThere;
}

namespace {

// A bad file is worth knowing also where no window can be opened.
ExitStatus refuseWindow(const WindowRequest &request, const Show::TypeSetup &types,
                        Console &console)
{
    if (request.showFile.isEmpty()) {
        console.fail(QStringLiteral("rehearsal: SHOW is missing, and there is no display for a "
                                    "window on a new one (see rehearsal --help)"));
        return WrongUsage;
    }
    if (!openShow(request.showFile, types, console))
        return Fault;
    return console.fail(QStringLiteral(
        "rehearsal: there is no display for the window; rehearsal render needs none"));
}

} // namespace

ExitStatus openWindow(const WindowRequest &request, const Show::TypeSetup &types, Console &console)
{
    if (!hasDisplay())
        return refuseWindow(request, types, console);
    QGuiApplication::setApplicationDisplayName(QString());
    QGuiApplication::setDesktopFileName(QStringLiteral("rehearsal"));
    QApplication::setWindowIcon(programIcon());
    MainWindow window(types);
    window.fitToScreen();
    const EndingSignals endingSignals;
    QObject::connect(&endingSignals, &EndingSignals::caught, &window, [&window](int signal) {
        window.leaveToRecover();
        EndingSignals::endBy(signal);
    });
    FileFault fault;
    if (!window.start(request.showFile, &fault))
        return console.fail(fault.message());
    window.show();
    return QApplication::exec() == 0 ? Done : Fault;
}

} // namespace rehearsal
