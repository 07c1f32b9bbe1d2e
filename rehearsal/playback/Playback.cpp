#include "Playback.h"

#include "CpuClock.h"
#include "Effect.h"
#include "EffectHost.h"
#include "Show.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace rehearsal {

namespace {

constexpr quint32 msPerDay = 24 * 60 * 60 * 1000;
constexpr double nsPerMs = 1e6;
constexpr double nsPerFrame = 1e9 / Playback::framesPerSecond;
/// Of an effect that is shorter than the show, so many starts at most are played on the way to a
/// place.
constexpr quint32 mostRuns = 10'000;

QTime timeOfDay(quint32 ms)
{
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms % msPerDay));
}

qint64 computersClock()
{
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// One run of an effect that may start again by itself, ms; 0 of any other.
quint32 runOf(Effect &effect)
{
    return EffectHost::holdsEffects(effect) ? static_cast<quint32>(effect.getCycleTime()) : 0;
}

void stopNested(Effect &effect, int fromLevel)
{
    std::vector<Effect *> holders{&effect};
    while (!holders.empty()) {
        Effect *holder = holders.back();
        holders.pop_back();
        for (Effect *nested : EffectHost::nested(*holder)) {
            if (EffectHost::level(*nested) >= fromLevel)
                nested->setState(false);
            if (EffectHost::holdsEffects(*nested))
                holders.push_back(nested);
        }
    }
}

} // namespace

Playback::Playback(WallClock wallClock, QObject *parent)
    : QObject(parent), m_wallClock(wallClock ? std::move(wallClock) : computersClock)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(1000 / framesPerSecond);
    connect(&m_timer, &QTimer::timeout, this, &Playback::tick);
}

Playback::~Playback() = default;

void Playback::setShow(Show *show)
{
    load(show);
    m_position = 0;
    m_isFinished = false;
    m_droppedFrames = 0;
    setState(State::Stopped);
    emit frameShown();
}

// While playing, show time goes on from where it is: the anchor stays.
void Playback::setRebuiltShow(Show *show)
{
    load(show);
    if (m_player && m_state != State::Stopped && !isAtEnd()) {
        showAt(within(m_position));
        return;
    }
    m_position = std::min(m_position, length());
    emit frameShown();
}

void Playback::load(Show *show)
{
    m_show = show;
    m_player.reset();
    m_clocks.clear();
    if (!show)
        return;
    show->map().clock().step(timeOfDay(0));
    m_player.emplace(show->map(), show->effects());
    m_player->start();
    setRunning(false);
}

// --- Transport ---

void Playback::play()
{
    if (!m_player || m_state == State::Playing)
        return;
    if (m_state == State::Stopped || m_isFinished)
        showAt(0);
    m_droppedFrames = 0;
    anchor();
    setState(State::Playing);
}

void Playback::pause()
{
    if (m_state != State::Playing)
        return;
    tick();
    if (m_state == State::Playing)
        setState(State::Paused);
}

void Playback::stop()
{
    if (!m_player)
        return;
    // The start of the show, so that whoever shows the state of the effects sees it.
    showAt(0);
    setRunning(false);
    m_show->map().resetLights();
    setState(State::Stopped);
    emit frameShown();
}

void Playback::restart()
{
    if (!m_player)
        return;
    showAt(0);
    anchor();
    if (m_state != State::Playing) {
        m_droppedFrames = 0;
        setState(State::Playing);
    }
}

void Playback::seek(quint32 positionMs)
{
    if (!m_player)
        return;
    showAt(within(positionMs));
    if (m_state == State::Playing)
        anchor();
    else
        setState(State::Paused);
}

void Playback::refresh()
{
    if (m_state == State::Playing)
        m_isEdited = true; // the next frame comes by itself
    else if (m_player && m_state == State::Paused && !isAtEnd())
        showAt(within(m_position));
    else if (m_player) {
        m_position = std::min(m_position, length());
        emit frameShown(); // the show may have another length
    }
}

void Playback::setSpeed(double speed)
{
    if (std::isnan(speed))
        return;
    if (m_state == State::Playing)
        tick();
    m_speed = std::clamp(speed, slowest, fastest);
    anchor();
}

quint32 Playback::length() const
{
    return m_player ? m_player->length() : 0;
}

// At its end a show stays dark, unless it has become longer.
bool Playback::isAtEnd() const
{
    return m_isFinished && m_position >= length();
}

quint32 Playback::within(quint32 positionMs) const
{
    const quint32 length = this->length();
    return length == 0 ? 0 : std::min(positionMs, length - 1);
}

void Playback::setState(State state)
{
    if (state == State::Playing)
        m_timer.start();
    else
        m_timer.stop();
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged();
}

// --- Time ---

void Playback::anchor()
{
    m_anchorMs = m_position;
    m_anchorWallNs = m_wallClock();
    m_lastTickNs = m_anchorWallNs;
}

void Playback::tick()
{
    if (!m_player || m_state != State::Playing)
        return;
    const qint64 now = m_wallClock();
    countDropped(now);
    const double length = this->length();
    double due = m_anchorMs + static_cast<double>(now - m_anchorWallNs) / nsPerMs * m_speed;
    if (due < length && !m_isEdited) {
        goOnTo(static_cast<quint32>(due));
        emit frameShown();
        return;
    }
    if (due >= length) {
        if (!m_looping || length <= 0) {
            finish();
            return;
        }
        due = std::fmod(due, length);
        m_anchorMs = due;
        m_anchorWallNs = now;
    }
    showAt(static_cast<quint32>(due));
}

void Playback::countDropped(qint64 now)
{
    const auto due =
        static_cast<qint64>(std::llround(static_cast<double>(now - m_lastTickNs) / nsPerFrame));
    m_droppedFrames += std::max<qint64>(0, due - 1);
    m_lastTickNs = now;
}

void Playback::finish()
{
    m_position = length();
    m_isFinished = true;
    setRunning(false);
    m_show->map().resetLights();
    setState(State::Paused);
    emit frameShown();
}

// --- Frames ---

// At the first frame every effect starts again. What is in the middle of its span at the last one
// starts there as if it had been running since its begin, so nothing between needs a frame but
// where an effect that is shorter than the show starts again by itself.
void Playback::showAt(quint32 positionMs)
{
    setRunning(true);
    m_clocks.clear();
    m_isEdited = false;
    m_show->map().clock().step(timeOfDay(0));
    for (Effect *effect : m_show->effects())
        effect->resetStartTime();
    frame(0);
    if (positionMs > 0)
        goOnTo(positionMs);
    emit frameShown();
}

// An effect starts again at the first frame behind its end, so there must be one right at its end.
void Playback::goOnTo(quint32 positionMs)
{
    for (const quint32 place : framesUpTo(positionMs)) {
        for (Effect *effect : m_show->effects()) {
            const quint32 run = runOf(*effect);
            if (run > 0 && place > 0 && place % run == 0)
                stopNested(*effect, 2);
        }
        frame(place);
    }
}

std::vector<quint32> Playback::framesUpTo(quint32 positionMs) const
{
    std::vector<quint32> places{positionMs};
    for (Effect *effect : m_show->effects()) {
        const quint32 run = runOf(*effect);
        if (run == 0)
            continue;
        const quint32 last = positionMs / run;
        const quint32 firstOfMost = last > mostRuns ? last - mostRuns : 0;
        for (quint32 i = std::max(m_position / run, firstOfMost) + 1; i <= last; ++i)
            places.push_back(i * run);
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

void Playback::frame(quint32 positionMs)
{
    keepClocks();
    const qint64 start = threadCpuNs();
    const QTime time = timeOfDay(positionMs);
    m_player->frame(time, m_frameNumber++);
    m_frameCpuNs = threadCpuNs() - start;
    m_show->map().clock().step(time);
    m_position = positionMs;
    m_isFinished = false;
    m_clocks.clear();
    for (Effect *effect : m_show->effects()) {
        const unsigned long elapsed = effect->getTotalElapsedTime();
        m_clocks.push_back({effect, elapsed, time.addMSecs(-static_cast<int>(elapsed))});
    }
}

// An edit may start an effect's clock again, as making it ready does. The show goes on regardless.
void Playback::keepClocks()
{
    for (const EffectClock &clock : m_clocks) {
        if (clock.effect->getTotalElapsedTime() != clock.elapsedMs)
            clock.effect->setStartTime(clock.start);
    }
}

// Nested effects are stopped in any case: what a stopped effect holds does not notice that it
// stopped, and would go on from its old start.
void Playback::setRunning(bool running)
{
    for (Effect *effect : m_show->effects()) {
        effect->setState(running);
        if (EffectHost::holdsEffects(*effect))
            stopNested(*effect, running ? 2 : 1);
    }
}

} // namespace rehearsal
