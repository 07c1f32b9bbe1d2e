#include "Effect.h"
#include "EffectHost.h"
#include "Player.h"
#include "SequenceImport.h"
#include "ShowFile.h"
#include "Soak.h"
#include "TestTypes.h"

#include <QFile>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr qint64 frameMs = 25;
constexpr qint64 minuteMs = 60 * 1000;
constexpr qint64 hourMs = 60 * minuteMs;
constexpr qint64 dayMs = 24 * hourMs;
/// The frames so close to a midnight are compared.
constexpr qint64 aroundMidnightMs = 10 * minuteMs;

// --- The shows. ---

// For where the real sequence is not there: as many effects, placed in the same manner.
QByteArray generatedSequence()
{
    constexpr int models = 40;
    constexpr int effectsOfModel = 46;
    constexpr int lengthMs = 110'000;
    const QStringList types{"On", "Twinkle", "Strobe", "On", "Off"};
    QString text =
        QStringLiteral("<xsequence><EffectDB>"
                       "<Effect>E_TEXTCTRL_Eff_On_Start=0,T_TEXTCTRL_Fadein=0.30</Effect>"
                       "<Effect>T_TEXTCTRL_Fadeout=0.50</Effect>"
                       "</EffectDB><ElementEffects>");
    for (int model = 0; model < models; ++model) {
        text +=
            QStringLiteral("<Element type=\"model\" name=\"Model %1\"><EffectLayer>").arg(model);
        for (int effect = 0; effect < effectsOfModel; ++effect) {
            const int begin = lengthMs * effect / effectsOfModel + model * 15;
            text +=
                QStringLiteral("<Effect ref=\"%1\" name=\"%2\" startTime=\"%3\" endTime=\"%4\"/>")
                    .arg(effect % 2)
                    .arg(types[(effect + model) % types.size()])
                    .arg(begin)
                    .arg(begin + 1200 + effect % 7 * 150);
        }
        text += QStringLiteral("</EffectLayer></Element>");
    }
    return (text + QStringLiteral("</ElementEffects></xsequence>")).toUtf8();
}

const QString realSequence = QStringLiteral(META_SHARED_DATA "/arrival-car-1.xsq");

std::unique_ptr<rehearsal::Show> importedShow()
{
    rehearsal::FileFault fault;
    rehearsal::ImportSummary summary;
    std::unique_ptr<rehearsal::Show> show =
        QFile::exists(realSequence)
            ? rehearsal::importSequence(realSequence, allTypes(), {true}, &summary, &fault)
            : rehearsal::parseSequence(generatedSequence(), QStringLiteral("generated sequence"),
                                       allTypes(), {true}, &summary, &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    show->effects().first()->setProperty(QStringLiteral("loop"), QStringLiteral("1"));
    return show;
}

using Settings = std::initializer_list<std::pair<const char *, QString>>;

QString effectText(const char *type, Settings settings, const QString &nested = {})
{
    QString text = QStringLiteral("<effect type=\"%1\">").arg(QLatin1String(type));
    for (const auto &[key, setting] : settings)
        text +=
            QStringLiteral("<property key=\"%1\">%2</property>").arg(QLatin1String(key), setting);
    return text + nested + QStringLiteral("</effect>");
}

// Children that fade nearly all the time, from about the start of the child with eid 1 to its end,
// and a meta effect above them.
QString siblingTexts(const QString &group)
{
    const auto fading = [&group](const char *type, const char *eid, const char *offset,
                                 const char *fade) {
        return effectText(type, {{"eid", eid},
                                 {"gid", group},
                                 {"cycletime", "1300"},
                                 {"starttype", "1"},
                                 {"startlinkeid", "1"},
                                 {"startlinkstart", "1"},
                                 {"startlinkoffset", offset},
                                 {"endtype", "1"},
                                 {"endlinkeid", "1"},
                                 {"endlinkstart", "0"},
                                 {"endlinkoffset", "0"},
                                 {"fadein", fade},
                                 {"fadeout", fade}});
    };
    const QString strobe = effectText("Strobe", {{"eid", "1"},
                                                 {"gid", group},
                                                 {"starttype", "0"},
                                                 {"startfixedtime", "700"},
                                                 {"endtype", "2"},
                                                 {"endcyclecount", "3"},
                                                 {"fadeout", "500"}});
    const QString above = effectText("Meta Effect",
                                     {{"loop", "1"},
                                      {"eid", "5"},
                                      {"starttype", "0"},
                                      {"startfixedtime", "500"},
                                      {"endtype", "0"},
                                      {"endfixedtime", "180000"},
                                      {"priority", "1"}},
                                     strobe);
    return fading("Chase", "2", "0", "100000") + fading("Twinkle", "3", "-1500", "90000")
           + fading("Pulse", "4", "30000", "60000") + above;
}

void resolve(const rehearsal::Show &show)
{
    for (Effect *effect : show.loadedEffects()) {
        if (!EffectHost::holdsEffects(*effect))
            continue;
        QMetaObject::invokeMethod(effect, "updateEffectTimes");
        QMetaObject::invokeMethod(effect, "updateEndTime");
    }
}

// The imported meta effect as a child that outlasts what it holds, beside the siblings.
std::unique_ptr<rehearsal::Show> nestedShow()
{
    const std::unique_ptr<rehearsal::Show> imported = importedShow();
    const Settings placed = {{"eid", "1"},     {"starttype", "0"},     {"startfixedtime", "2000"},
                             {"endtype", "2"}, {"endcyclecount", "2"}, {"transparency", "0.2"}};
    for (const auto &[key, setting] : placed)
        imported->effects().first()->setProperty(QLatin1String(key), setting);
    const QString text = rehearsal::showText(*imported);
    const qsizetype start = text.indexOf(QStringLiteral("<effect"));
    const qsizetype end = text.lastIndexOf(QStringLiteral("</show>"));
    const QString group = QString::number(imported->map().groups().front()->uid());
    const QString whole = text.left(start)
                          + effectText("Meta Effect", {{"loop", "1"}},
                                       text.mid(start, end - start) + siblingTexts(group))
                          + QStringLiteral("</show>");
    rehearsal::FileFault fault;
    std::unique_ptr<rehearsal::Show> show =
        rehearsal::parseShow(whole.toUtf8(), QStringLiteral("nested"), allTypes(), &fault);
    if (!show)
        qFatal("%s", qPrintable(fault.message()));
    resolve(*show);
    return show;
}

// --- What is compared. ---

class Hash
{
public:
    void add(quint64 bits)
    {
        m_hash ^= bits;
        m_hash *= 0x9E37'79B9'7F4A'7C15u;
        m_hash ^= m_hash >> 29;
    }
    quint64 value() const { return m_hash; }

private:
    quint64 m_hash = 1;
};

struct Memory
{
    qint64 heapBytes = 0;
    qint64 residentBytes = 0;
};

Memory memoryNow()
{
    const struct mallinfo2 heap = mallinfo2();
    Memory memory{static_cast<qint64>(heap.uordblks + heap.hblkhd), 0};
    QFile file(QStringLiteral("/proc/self/statm"));
    if (file.open(QIODevice::ReadOnly))
        memory.residentBytes = file.readAll().split(' ').value(1).toLongLong() * getpagesize();
    return memory;
}

/// A show that loops. Its first run is what all others are compared with, frame by frame.
class LoopedShow
{
public:
    LoopedShow(QString name, std::unique_ptr<rehearsal::Show> show, QTime start)
        : m_name(std::move(name)),
          m_show(std::move(show)),
          m_player(m_show->map(), m_show->effects()),
          m_top(*m_show->effects().first()),
          m_effects(m_show->loadedEffects()),
          m_lights(m_show->map().lights())
    {
        m_show->map().clock().step(start);
        m_player.start();
        m_framesOfRun = (m_player.length() + frameMs - 1) / frameMs;
        m_firstRun.resize(static_cast<std::size_t>(m_framesOfRun));
    }

    /// @param frame counted from the first, which is played at the time given to the constructor
    void play(QTime time, qint64 frame, bool isCompared)
    {
        const auto place = static_cast<std::size_t>(frame % m_framesOfRun);
        m_player.frame(time, static_cast<unsigned long>(frame));
        if (m_top.getTotalElapsedTime() != place * frameMs)
            ++m_drifted;
        if (frame < m_framesOfRun)
            note(place);
        else if (isCompared)
            compare(m_firstRun[place]);
    }

    bool startsRun(qint64 frame) const { return frame % m_framesOfRun == 0; }

    /// The lengths of all texts of all properties of all effects, in characters.
    qint64 textLength() const
    {
        qint64 length = 0;
        for (const Effect *effect : m_effects) {
            for (const auto &property : EffectHost::properties(*effect))
                length += property.key.size() + property.text.size();
        }
        return length;
    }

    QString description(qint64 frames) const
    {
        return QStringLiteral("%1: %2 frames, %3 runs of %4 ms, %5 effects, %6 lights")
            .arg(m_name)
            .arg(frames)
            .arg(frames / m_framesOfRun)
            .arg(m_player.length())
            .arg(m_effects.size())
            .arg(m_lights.size());
    }

    /// Frames that were not where the whole runs before them put them.
    qint64 drifted() const { return m_drifted; }
    qint64 compared() const { return m_compared; }
    qint64 otherChildren() const { return m_otherChildren; }
    qint64 otherLights() const { return m_otherLights; }
    qint64 startsOfRun() const { return m_startsOfRun; }
    const QString &name() const { return m_name; }

private:
    struct Frame
    {
        quint64 children = 0; ///< which run, and for how long
        quint64 lights = 0;   ///< what they show
    };

    void note(std::size_t place)
    {
        m_firstRun[place] = {childrenNow(), lightsNow()};
        m_wasRunning.resize(m_effects.size());
        for (std::size_t i = 0; i < m_effects.size(); ++i) {
            const bool isRunning = m_effects[i]->getState();
            if (isRunning && !m_wasRunning[i])
                ++m_startsOfRun;
            m_wasRunning[i] = isRunning;
        }
    }

    void compare(const Frame &expected)
    {
        ++m_compared;
        if (expected.children != childrenNow())
            ++m_otherChildren;
        if (expected.lights != lightsNow())
            ++m_otherLights;
    }

    quint64 childrenNow() const
    {
        Hash hash;
        for (const Effect *effect : m_effects)
            hash.add(effect->getState() ? effect->getTotalElapsedTime() + 1 : 0);
        return hash.value();
    }

    quint64 lightsNow() const
    {
        Hash hash;
        for (const rehearsal::StageLight *light : m_lights)
            hash.add(std::bit_cast<quint64>(light->shown()));
        return hash.value();
    }

    QString m_name;
    std::unique_ptr<rehearsal::Show> m_show;
    rehearsal::Player m_player;
    Effect &m_top;
    const std::vector<Effect *> &m_effects;
    std::vector<rehearsal::StageLight *> m_lights;
    qint64 m_framesOfRun = 0;
    std::vector<Frame> m_firstRun;
    std::vector<bool> m_wasRunning; ///< in the frame noted last
    qint64 m_startsOfRun = 0;
    qint64 m_drifted = 0;
    qint64 m_compared = 0;
    qint64 m_otherChildren = 0;
    qint64 m_otherLights = 0;
};

// --- The run. ---

/// When the show time of a run begins and which parts of it are looked at closely.
class Course
{
public:
    explicit Course(qint64 lengthMs)
        : m_lengthMs(lengthMs),
          m_settledMs(std::min(hourMs, lengthMs / 2)),
          m_startMs(dayMs - std::min(2 * hourMs, lengthMs / 2))
    {
    }

    qint64 frames() const { return m_lengthMs / frameMs; }
    /// "The first hour", shorter in a short run.
    qint64 settledMs() const { return m_settledMs; }
    qint64 midnights() const { return (m_startMs + m_lengthMs - 1) / dayMs; }
    QTime timeOfDay(qint64 ms) const
    {
        return QTime::fromMSecsSinceStartOfDay(static_cast<int>((m_startMs + ms) % dayMs));
    }
    bool isLastHour(qint64 ms) const { return ms >= m_lengthMs - m_settledMs; }
    bool isCompared(qint64 ms) const
    {
        const qint64 sinceMidnight = (m_startMs + ms) % dayMs;
        return ms < m_settledMs || isLastHour(ms) || sinceMidnight < aroundMidnightMs
               || sinceMidnight >= dayMs - aroundMidnightMs;
    }

private:
    qint64 m_lengthMs;
    qint64 m_settledMs;
    qint64 m_startMs;
};

double percentOff(qint64 early, qint64 late)
{
    return (static_cast<double>(late) - static_cast<double>(early)) * 100.0
           / static_cast<double>(early);
}

[[maybe_unused]] bool reportMemory(const char *what, qint64 early, qint64 late)
{
    const double off = percentOff(early, late);
    return soak::report(std::abs(off) <= 1.0,
                        QStringLiteral("%1 after the first hour %2 KiB, at the end %3 KiB: %4 %")
                            .arg(QLatin1String(what))
                            .arg(early / 1024)
                            .arg(late / 1024)
                            .arg(off, 0, 'f', 3)
                            .toStdString());
}

struct Sample
{
    Memory memory;
    std::vector<qint64> texts; ///< by show, each at the start of a run
};

using Shows = std::vector<std::unique_ptr<LoopedShow>>;

Shows makeShows(QTime start)
{
    Shows shows;
    shows.push_back(
        std::make_unique<LoopedShow>(QStringLiteral("top level"), importedShow(), start));
    shows.push_back(std::make_unique<LoopedShow>(QStringLiteral("nested"), nestedShow(), start));
    return shows;
}

// Plays one frame of every show. What a show's texts are is noted whenever it starts a run.
void playFrame(Shows &shows, const Course &course, qint64 frame, std::vector<qint64> *texts)
{
    const qint64 ms = frame * frameMs;
    for (std::size_t i = 0; i < shows.size(); ++i) {
        LoopedShow &show = *shows[i];
        show.play(course.timeOfDay(ms), frame, course.isCompared(ms));
        if (texts && show.startsRun(frame))
            (*texts)[i] = show.textLength();
    }
}

// A word now and then: where the run is, and what it found so far.
void tellProgress(const Shows &shows, qint64 ms)
{
    const Memory memory = memoryNow();
    std::fprintf(stderr, "%lld h: heap %lld KiB, resident %lld KiB", qlonglong(ms / hourMs),
                 qlonglong(memory.heapBytes / 1024), qlonglong(memory.residentBytes / 1024));
    for (const auto &show : shows) {
        std::fprintf(stderr, "; %s: %lld of %lld frames differ, %lld drifted",
                     qPrintable(show->name()),
                     qlonglong(show->otherChildren() + show->otherLights()),
                     qlonglong(show->compared()), qlonglong(show->drifted()));
    }
    std::fprintf(stderr, "\n");
}

void playAll(Shows &shows, const Course &course, Sample &early, Sample &late)
{
    const qint64 settledFrame = course.settledMs() / frameMs;
    for (qint64 frame = 0; frame < course.frames(); ++frame) {
        const qint64 ms = frame * frameMs;
        if (frame == settledFrame)
            early.memory = memoryNow();
        if (frame > 0 && ms % (dayMs / 4) == 0)
            tellProgress(shows, ms);
        if (frame < settledFrame)
            playFrame(shows, course, frame, &early.texts);
        else
            playFrame(shows, course, frame, course.isLastHour(ms) ? &late.texts : nullptr);
    }
    late.memory = memoryNow();
}

int reportShow(const LoopedShow &show, qint64 frames, qint64 earlyText, qint64 lateText)
{
    int faults = 0;
    faults +=
        !soak::report(show.drifted() == 0, QStringLiteral("%1; %2 of the frames late or early")
                                               .arg(show.description(frames))
                                               .arg(show.drifted())
                                               .toStdString());
    faults += !soak::report(
        show.compared() > 0 && show.startsOfRun() > 0 && show.otherChildren() == 0
            && show.otherLights() == 0,
        QStringLiteral("%1: of %2 frames compared with the first run, in which effects start %3 "
                       "times, %4 have other children running or children started at another "
                       "time, and %5 other light")
            .arg(show.name())
            .arg(show.compared())
            .arg(show.startsOfRun())
            .arg(show.otherChildren())
            .arg(show.otherLights())
            .toStdString());
    faults += !soak::report(earlyText == lateText,
                            QStringLiteral("%1: texts of all properties after the first hour %2 "
                                           "characters, at the end %3")
                                .arg(show.name())
                                .arg(earlyText)
                                .arg(lateText)
                                .toStdString());
    return faults;
}

int days(const QStringList &arguments)
{
    const qint64 lengthMs =
        soak::numberAt(arguments, 0, 7) * dayMs + soak::numberAt(arguments, 1, 0) * minuteMs;
    const Course course(lengthMs);
    Shows shows = makeShows(course.timeOfDay(0));
    Sample early{{}, std::vector<qint64>(shows.size())};
    Sample late = early;
    playAll(shows, course, early, late);

    int faults = 0;
    faults +=
        !soak::report(course.midnights() > 0,
                      QStringLiteral("%1 hours of show time, across %2 midnights; %3")
                          .arg(double(lengthMs) / hourMs, 0, 'f', 1)
                          .arg(course.midnights())
                          .arg(QFile::exists(realSequence) ? QStringLiteral("a real sequence")
                                                           : QStringLiteral("a generated sequence"))
                          .toStdString());
#ifndef META_SANITIZED // which keeps for a while what was freed, and tells leaks itself
    faults += !reportMemory("heap in use", early.memory.heapBytes, late.memory.heapBytes);
    faults += !reportMemory("resident", early.memory.residentBytes, late.memory.residentBytes);
#endif
    for (std::size_t i = 0; i < shows.size(); ++i)
        faults += reportShow(*shows[i], course.frames(), early.texts[i], late.texts[i]);
    return faults;
}

const soak::Command
    command("days",
            "[DAYS=7] [MINUTES=0]      shows loop for days: memory, midnights, drift, texts", days);

} // namespace
