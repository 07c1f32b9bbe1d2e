#include "RenderCommand.h"

#include "BrightnessGrid.h"
#include "BrightnessPicture.h"
#include "BrightnessTable.h"
#include "FrameTimes.h"
#include "OutputFile.h"
#include "Player.h"
#include "ProgressBar.h"
#include "ShowSource.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QTextStream>

namespace rehearsal {

namespace {

constexpr qint64 msPerDay = 24 * 60 * 60 * 1000;

QTime timeOfDay(qint64 ms)
{
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms % msPerDay));
}

/// What a render writes to, opened before the first frame so that a bad file name costs no time.
struct Outputs
{
    std::unique_ptr<OutputFile> table;
    std::unique_ptr<OutputFile> picture;

    bool open(const RenderRequest &request, FileFault *fault)
    {
        if (!request.tableFile.isEmpty() && !(table = OutputFile::open(request.tableFile, fault)))
            return false;
        return request.pictureFile.isEmpty()
               || (picture = OutputFile::open(request.pictureFile, fault));
    }

    bool commit(FileFault *fault)
    {
        return (!table || table->commit(fault)) && (!picture || picture->commit(fault));
    }
};

class Render
{
public:
    Render(Show &show, Player &player, FrameTimes times)
        : m_map(show.map()), m_player(player), m_times(times), m_lights(show.map().lights())
    {
    }

    void writeTo(Outputs &outputs, const QString &title, Console &console);

private:
    /// Plays one frame; the brightness of every light in ascending uid.
    const std::vector<double> &play(qint64 frame);
    QImage draw(const BrightnessGrid &grid, const QString &title) const;

    StageMap &m_map;
    Player &m_player;
    FrameTimes m_times;
    std::vector<StageLight *> m_lights;
    std::vector<double> m_brightness;
};

const std::vector<double> &Render::play(qint64 frame)
{
    m_player.frame(timeOfDay(m_times.at(frame)), static_cast<unsigned long>(frame));
    m_brightness.clear();
    for (const StageLight *light : m_lights)
        m_brightness.push_back(light->shown());
    return m_brightness;
}

void Render::writeTo(Outputs &outputs, const QString &title, Console &console)
{
    std::optional<BrightnessTable> table;
    if (outputs.table) {
        std::vector<quint32> uids;
        for (const StageLight *light : m_lights)
            uids.push_back(light->uid());
        table.emplace(outputs.table->device(), uids);
    }
    std::optional<BrightnessGrid> grid;
    if (outputs.picture)
        grid.emplace(m_times.count(), m_lights.size());

    ProgressBar progress(console, m_times.count());
    for (qint64 frame = 0; frame < m_times.count(); ++frame) {
        const std::vector<double> &brightness = play(frame);
        if (table)
            table->addFrame(m_times.at(frame), brightness);
        if (grid)
            grid->addFrame(frame, brightness);
        progress.update(frame + 1);
    }
    if (grid) {
        // Written in one piece, so that a device that takes nothing is one fault, not two.
        QBuffer picture;
        QImageWriter(&picture, "png").write(draw(*grid, title));
        outputs.picture->device().write(picture.data());
    }
}

QImage Render::draw(const BrightnessGrid &grid, const QString &title) const
{
    QStringList names;
    for (const StageLight *light : m_lights)
        names.append(singleLine(light->name()));
    return BrightnessPicture(title, names, m_times).draw(grid);
}

} // namespace

ExitStatus render(const RenderRequest &request, const Show::TypeSetup &types, Console &console)
{
    const std::unique_ptr<Show> show = openShow(request.showFile, types, console);
    if (!show)
        return Fault;
    FileFault fault;
    Outputs outputs;
    if (!outputs.open(request, &fault))
        return console.fail(fault.message());

    show->map().clock().step(timeOfDay(0));
    Player player(show->map(), show->effects());
    player.start();
    const FrameTimes times(request.fps, request.lengthMs.value_or(player.length()));
    const QString title = QFileInfo(request.showFile).fileName();
    Render(*show, player, times).writeTo(outputs, title, console);
    if (!outputs.commit(&fault))
        return console.fail(fault.message());

    console.out() << title << ": " << times.count() << " frames in "
                  << QString::number(times.lengthMs() / 1000.0, 'g', 10) << " s, "
                  << show->map().lights().size() << " lights\n";
    if (outputs.table)
        console.out() << "brightness: " << request.tableFile << '\n';
    if (outputs.picture)
        console.out() << "picture: " << request.pictureFile << '\n';
    return Done;
}

} // namespace rehearsal
