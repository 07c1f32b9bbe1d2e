#include "Soak.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cstdio>

namespace soak {

namespace {

std::vector<Command> &commands()
{
    static std::vector<Command> known;
    return known;
}

} // namespace

Command::Command(std::string commandName, std::string itsUsage, Run itsRun)
    : name(std::move(commandName)), usage(std::move(itsUsage)), run(std::move(itsRun))
{
    commands().push_back(*this);
}

const std::vector<Command> &Command::all()
{
    return commands();
}

bool report(bool holds, const std::string &line)
{
    std::printf("%s  %s\n", holds ? "holds " : "FAILED", line.c_str());
    std::fflush(stdout);
    return holds;
}

qint64 numberAt(const QStringList &arguments, qsizetype place, qint64 usual)
{
    bool isNumber = false;
    const qint64 number = arguments.value(place).toLongLong(&isNumber);
    return isNumber ? number : usual;
}

} // namespace soak

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    for (const soak::Command &command : soak::Command::all()) {
        if (arguments.value(1) == QString::fromStdString(command.name))
            return command.run(arguments.mid(2));
    }
    std::fprintf(stderr, "usage: metaeffect_soak COMMAND [ARGUMENTS]\n");
    for (const soak::Command &command : soak::Command::all())
        std::fprintf(stderr, "  %-6s %s\n", command.name.c_str(), command.usage.c_str());
    return 2;
}
