#include "CommandLine.h"
#include "Console.h"
#include "Program.h"

#include <QApplication>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

using namespace rehearsal;

namespace {

// Qt tells, while it starts, of a locale or a runtime directory that it would like better, and at
// length of a display that does not answer, which is fatal.
void keepFatalMessages(QtMsgType type, const QMessageLogContext &, const QString &)
{
    if (type != QtFatalMsg)
        return;
    std::fputs("rehearsal: the display does not answer\n", stderr);
    std::_Exit(Fault);
}

QStringList textsOf(int count, char **texts)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list.append(QString::fromLocal8Bit(texts[i]));
    return list;
}

} // namespace

int main(int argc, char **argv)
{
    QTextStream out(stdout);
    QTextStream errors(stderr);
    Console console(out, errors, isatty(STDERR_FILENO) != 0);
    QString fault;
    const std::optional<CommandLine> commandLine = parseCommandLine(textsOf(argc, argv), &fault);
    if (!commandLine) {
        console.fail(fault);
        return WrongUsage;
    }
    if (!std::holds_alternative<WindowRequest>(commandLine->request) || !hasDisplay())
        qputenv("QT_QPA_PLATFORM",
                "offscreen"); // text in pictures needs an application, no display
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qunsetenv("QT_LOGGING_RULES"); // --debug alone decides on the debug lines
    const QtMessageHandler usualHandler = qInstallMessageHandler(keepFatalMessages);
    int applicationArgc = 1; // the arguments are ours alone
    QCoreApplication::setOrganizationName(QStringLiteral("rehearsal"));
    QCoreApplication::setApplicationName(QStringLiteral("rehearsal"));
    const QApplication application(applicationArgc, argv);
    qInstallMessageHandler(usualHandler);
    return run(*commandLine, console);
}
