#include "ShowRender.h"

#include "BrightnessGrid.h"
#include "BrightnessPicture.h"
#include "BrightnessTable.h"
#include "OutputFile.h"
#include "Player.h"
#include "Show.h"
#include "SingleLine.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImageWriter>

namespace rehearsal {

namespace {

constexpr qint64 msPerDay = 24 * 60 * 60 * 1000;

QTime timeOfDay(qint64 ms)
{
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms % msPerDay));
}

std::unique_ptr<Player> startedPlayer(Show &show)
{
    show.map().clock().step(timeOfDay(0));
    auto player = std::make_unique<Player>(show.map(), show.effects());
    player->start();
    return player;
}

} // namespace

std::unique_ptr<ShowRender> ShowRender::begin(std::unique_ptr<Show> show, const QString &title,
                                              const RenderPlan &plan, FileFault *fault)
{
    Outputs outputs;
    if (!plan.tableFile.isEmpty() && !(outputs.table = OutputFile::open(plan.tableFile, fault)))
        return {};
    if (!plan.pictureFile.isEmpty()
        && !(outputs.picture = OutputFile::open(plan.pictureFile, fault)))
        return {};
    return std::unique_ptr<ShowRender>(
        new ShowRender(std::move(show), title, plan, std::move(outputs)));
}

ShowRender::ShowRender(std::unique_ptr<Show> show, QString title, const RenderPlan &plan,
                       Outputs outputs)
    : m_show(std::move(show)),
      m_title(std::move(title)),
      m_outputs(std::move(outputs)),
      m_player(startedPlayer(*m_show)),
      m_times(plan.fps, plan.lengthMs.value_or(m_player->length())),
      m_lights(m_show->map().lights())
{
    if (m_outputs.table) {
        std::vector<quint32> uids;
        for (const StageLight *light : m_lights)
            uids.push_back(light->uid());
        m_table = std::make_unique<BrightnessTable>(m_outputs.table->device(), uids);
    }
    if (m_outputs.picture)
        m_grid = std::make_unique<BrightnessGrid>(m_times.count(), m_lights.size());
}

ShowRender::~ShowRender() = default;

void ShowRender::playFrame()
{
    const qint64 frame = m_framesDone++;
    m_player->frame(timeOfDay(m_times.at(frame)), static_cast<unsigned long>(frame));
    m_brightness.clear();
    for (const StageLight *light : m_lights)
        m_brightness.push_back(light->shown());
    if (m_table)
        m_table->addFrame(m_times.at(frame), m_brightness);
    if (m_grid)
        m_grid->addFrame(frame, m_brightness);
}

void ShowRender::playFor(qint64 workMs)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    do
        playFrame();
    while (!isPlayed() && sinceStart.elapsed() < workMs);
}

bool ShowRender::finish(FileFault *fault)
{
    if (m_grid)
        writePicture();
    return (!m_outputs.table || m_outputs.table->commit(fault))
           && (!m_outputs.picture || m_outputs.picture->commit(fault));
}

// In one piece, so that a device that takes nothing is one fault, not two.
void ShowRender::writePicture()
{
    QStringList names;
    for (const StageLight *light : m_lights)
        names.append(singleLine(light->name()));
    QBuffer picture;
    QImageWriter(&picture, "png").write(BrightnessPicture(m_title, names, m_times).draw(*m_grid));
    m_outputs.picture->device().write(picture.data());
}

} // namespace rehearsal
