#include "RenderCommand.h"

#include "ProgressBar.h"
#include "ShowSource.h"

#include <QFileInfo>
#include <QTextStream>

namespace rehearsal {

namespace {

void playAll(ShowRender &render, Console &console)
{
    ProgressBar progress(console, render.times().count());
    while (!render.isPlayed()) {
        render.playFrame();
        progress.update(render.framesDone());
    }
}

} // namespace

ExitStatus render(const RenderRequest &request, const Show::TypeSetup &types, Console &console)
{
    std::unique_ptr<Show> show = openShow(request.showFile, types, console);
    if (!show)
        return Fault;
    const QString title = QFileInfo(request.showFile).fileName();
    FileFault fault;
    const std::unique_ptr<ShowRender> render =
        ShowRender::begin(std::move(show), title, request, &fault);
    if (!render)
        return console.fail(fault.message());
    playAll(*render, console);
    if (!render->finish(&fault))
        return console.fail(fault.message());

    console.out() << title << ": " << render->times().count() << " frames in "
                  << QString::number(render->times().lengthMs() / 1000.0, 'g', 10) << " s, "
                  << render->lightCount() << " lights\n";
    if (!request.tableFile.isEmpty())
        console.out() << "brightness: " << request.tableFile << '\n';
    if (!request.pictureFile.isEmpty())
        console.out() << "picture: " << request.pictureFile << '\n';
    return Done;
}

} // namespace rehearsal
