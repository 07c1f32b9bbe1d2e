#include "CommandLine.h"
#include "Console.h"
#include "Program.h"

#include <QApplication>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

using namespace rehearsal;

namespace {

// Qt tells, while it starts, of a locale or a runtime directory that it would like better. Neither
// matters to a program without a window.
void keepFatalMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
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
    qputenv("QT_QPA_PLATFORM", "offscreen"); // text in pictures needs an application, no display
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qunsetenv("QT_LOGGING_RULES"); // --debug alone decides on the debug lines
    const QtMessageHandler usualHandler = qInstallMessageHandler(keepFatalMessages);
    int applicationArgc = 1; // the arguments are ours alone
    const QApplication application(applicationArgc, argv);
    qInstallMessageHandler(usualHandler);
    return run(*commandLine, console);
}
