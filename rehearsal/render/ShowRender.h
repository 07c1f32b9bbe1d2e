#pragma once

#include "FileFault.h"
#include "FrameTimes.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace rehearsal {

class BrightnessGrid;
class BrightnessTable;
class OutputFile;
class Player;
class Show;
class StageLight;

/// What a render writes, and which frames it plays.
struct RenderPlan
{
    double fps = 40;                 ///< see FrameTimes
    std::optional<quint32> lengthMs; ///< one run of the longest effect if absent
    QString tableFile;               ///< empty: no table
    QString pictureFile;             ///< empty: no picture
};

/// Plays a show in simulated time from midnight on, in as many pieces as one likes, and writes what
/// its lights show. Dropped before finish(), it leaves every regular file as it was.
class ShowRender
{
public:
    /// Opens the files and starts the show. Null and a fault when a file cannot be opened.
    /// @param title stands over the picture
    static std::unique_ptr<ShowRender> begin(std::unique_ptr<Show> show, const QString &title,
                                             const RenderPlan &plan, FileFault *fault);
    ~ShowRender();
    Q_DISABLE_COPY_MOVE(ShowRender)

    const FrameTimes &times() const { return m_times; }
    std::size_t lightCount() const { return m_lights.size(); }
    qint64 framesDone() const { return m_framesDone; }
    bool isPlayed() const { return m_framesDone == m_times.count(); }

    /// Plays the next frame; there must be one.
    void playFrame();
    /// Plays frames until that many milliseconds have passed or all are played; at least one, which
    /// there must be.
    void playFor(qint64 workMs);
    /// When all is played: draws the picture and puts the files in their places, in whatever
    /// thread. False and a fault when one of them could not be written.
    bool finish(FileFault *fault);

private:
    struct Outputs
    {
        std::unique_ptr<OutputFile> table;
        std::unique_ptr<OutputFile> picture;
    };

    ShowRender(std::unique_ptr<Show> show, QString title, const RenderPlan &plan, Outputs outputs);
    void writePicture();

    std::unique_ptr<Show> m_show;
    QString m_title;
    Outputs m_outputs;
    std::unique_ptr<Player> m_player;
    FrameTimes m_times;
    std::vector<StageLight *> m_lights; ///< in ascending uid
    std::unique_ptr<BrightnessTable> m_table;
    std::unique_ptr<BrightnessGrid> m_grid;
    std::vector<double> m_brightness; ///< of every light in the latest frame
    qint64 m_framesDone = 0;
};

} // namespace rehearsal
