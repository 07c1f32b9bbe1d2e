#include "Program.h"

#include "TypeLoader.h"

#include <QLoggingCategory>
#include <QTextStream>

namespace rehearsal {

namespace {

class Runner
{
public:
    Runner(const Show::TypeSetup &types, Console &console) : m_types(types), m_console(console) {}

    ExitStatus operator()(const TextRequest &) const { return Done; }
    ExitStatus operator()(const WindowRequest &request) const
    {
        return openWindow(request, m_types, m_console);
    }
    ExitStatus operator()(const RenderRequest &request) const
    {
        return render(request, m_types, m_console);
    }
    ExitStatus operator()(const InspectRequest &request) const
    {
        return inspect(request, m_types, m_console);
    }
    ExitStatus operator()(const ResolveRequest &request) const
    {
        return resolve(request, m_types, m_console);
    }
    ExitStatus operator()(const ImportRequest &request) const
    {
        return importToShow(request, m_types, m_console);
    }

private:
    const Show::TypeSetup &m_types;
    Console &m_console;
};

ExitStatus runCommand(const CommandLine &commandLine, Console &console)
{
    if (const auto *request = std::get_if<TextRequest>(&commandLine.request)) {
        console.out() << request->text;
        return Done;
    }
    QLoggingCategory::setFilterRules(commandLine.showsDebugLines
                                         ? QStringLiteral("default.debug=true")
                                         : QStringLiteral("default.debug=false"));
    FileFault fault;
    const std::optional<Show::TypeSetup> types = loadTypes(commandLine.pluginFile, &fault);
    if (!types)
        return console.fail(fault.message());
    return std::visit(Runner(*types, console), commandLine.request);
}

} // namespace

ExitStatus run(const CommandLine &commandLine, Console &console)
{
    const ExitStatus status = runCommand(commandLine, console);
    console.out().flush();
    if (status == Done && console.out().status() != QTextStream::Ok)
        return console.fail(QStringLiteral("standard output cannot be written"));
    return status;
}

} // namespace rehearsal
