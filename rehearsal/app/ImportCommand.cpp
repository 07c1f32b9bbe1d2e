#include "ImportCommand.h"

#include "ProgressBar.h"
#include "ShowFile.h"

#include <QTextStream>

namespace rehearsal {

namespace {

void writeSummary(QTextStream &out, const QString &file, const ImportSummary &summary)
{
    out << file << ": " << summary.lights << " lights, " << summary.effects << " effects, "
        << summary.linked << " of them linked\n";
    int replaced = 0;
    for (const auto &[type, count] : summary.replaced)
        replaced += count;
    if (replaced == 0)
        return;
    out << replaced << " effects have no counterpart and became a Solid at full:\n";
    for (const auto &[type, count] : summary.replaced)
        out << QString::number(count).rightJustified(8) << "  "
            << (type.isEmpty() ? QStringLiteral("(no name)") : singleLine(type)) << '\n';
}

std::unique_ptr<Show> import(const ImportRequest &request, const Show::TypeSetup &types,
                             ImportSummary *summary, FileFault *fault, Console &console)
{
    ProgressBar bar(console, 100);
    return importSequence(request.sequenceFile, types, request.options, summary, fault,
                          [&bar](int percent) {
                              bar.update(percent);
                              return true;
                          });
}

} // namespace

ExitStatus importToShow(const ImportRequest &request, const Show::TypeSetup &types,
                        Console &console)
{
    FileFault fault;
    ImportSummary summary;
    const std::unique_ptr<Show> show = import(request, types, &summary, &fault, console);
    if (!show || !saveShow(*show, request.outFile, &fault))
        return console.fail(fault.message());
    writeSummary(console.out(), request.outFile, summary);
    return Done;
}

} // namespace rehearsal
