#pragma once

#include <QStringList>

#include <functional>
#include <string>
#include <vector>

/// Long runs: each is a command of metaeffect_soak, and says what it found, in figures.
namespace soak {

/// What a run found: 0 when all held.
using Run = std::function<int(const QStringList &arguments)>;

/// A command makes itself known by an object of this kind at namespace scope.
class Command
{
public:
    /// @param usage the arguments with their defaults, and what the run proves, in a line
    Command(std::string name, std::string usage, Run run);

    std::string name;
    std::string usage;
    Run run;

    static const std::vector<Command> &all();
};

/// Prints a line of the report and returns whether it held, so that a run can count what did not.
bool report(bool holds, const std::string &line);

/// The argument at a place as a whole number, or its default.
qint64 numberAt(const QStringList &arguments, qsizetype place, qint64 usual);

} // namespace soak
