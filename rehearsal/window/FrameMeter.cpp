#include "FrameMeter.h"

#include "CpuClock.h"
#include "Playback.h"

namespace rehearsal {

namespace {

constexpr int tellEveryMs = 500;

QString milliseconds(double ns)
{
    return QString::number(ns / 1e6, 'f', 1);
}

} // namespace

FrameMeter::FrameMeter(Playback &playback, QWidget *parent) : QLabel(parent), m_playback(playback)
{
    setObjectName(QStringLiteral("frameMeter"));
    setToolTip(tr("Processor time that the window takes for a frame, the effects' part of it, "
                  "frames shown in a second, and frames that were due and not shown since play was "
                  "pressed"));
    connect(&playback, &Playback::frameShown, this, &FrameMeter::noteFrame);
    connect(&playback, &Playback::stateChanged, this, &FrameMeter::startAnew);
    startAnew();
}

void FrameMeter::startAnew()
{
    m_frames = 0;
    m_effectsCpu = 0;
    m_cpuAtStart = threadCpuNs();
    m_sinceTold.start();
    if (m_playback.state() == Playback::State::Stopped)
        clear();
}

void FrameMeter::noteFrame()
{
    if (m_playback.state() != Playback::State::Playing)
        return;
    ++m_frames;
    m_effectsCpu += m_playback.frameCpuNs();
    if (m_sinceTold.elapsed() >= tellEveryMs)
        tell();
}

void FrameMeter::tell()
{
    const double frames = m_frames;
    const auto cpu = static_cast<double>(threadCpuNs() - m_cpuAtStart);
    const double rate = frames * 1000 / static_cast<double>(m_sinceTold.elapsed());
    setText(tr("frame %1 ms (effects %2 ms)  ·  %3 fps  ·  %4 dropped")
                .arg(milliseconds(cpu / frames),
                     milliseconds(static_cast<double>(m_effectsCpu) / frames),
                     QString::number(rate, 'f', 0), QString::number(m_playback.droppedFrames())));
    startAnew();
}

} // namespace rehearsal
