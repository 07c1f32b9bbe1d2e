#pragma once

#include "EditorView.h"
#include "FrameRenderer.h"
#include "StageMap.h"
#include "StubEffect.h"

#include <utility>

/// Eids and play states, in the order in which they were shown.
using Shown = QList<std::pair<quint32, bool>>;

/// Notes what it is told.
class FakeEditor final : public meta::EditorView
{
public:
    void showPlayState(quint32 eid, bool running) override { shown.append({eid, running}); }

    Shown shown;
};

/// A parent whose clock was started at `start`, and what plays its children.
class FramePlaying
{
public:
    explicit FramePlaying(QTime start = QTime(12, 0)) : m_start(start)
    {
        parent.setStartTime(start);
    }

    StubEffect *add(quint32 eid, quint32 begin, quint32 end)
    {
        auto *child = new StubEffect(&map, eid);
        child->with("begin", begin).with("end", end);
        roster.insert(child);
        return child;
    }

    /// The frame `ms` after the first start of the parent's clock.
    void frameAt(quint32 ms)
    {
        settings.time = m_start.addMSecs(static_cast<int>(ms));
        map.clock().beginFrame(settings.time);
        parent.updateLights(settings.time, settings.arg);
        renderer.render(parent, settings, lights, editor);
        map.clock().endFrame();
    }

    quint32 now() const { return static_cast<quint32>(parent.getTotalElapsedTime()); }

    rehearsal::StageMap map;
    StubEffect parent{&map};
    meta::ChildRoster roster;
    meta::FrameRenderer renderer{roster};
    meta::FrameRenderer::Frame settings{{}, 77, 0.0, 0, false, 1.0};
    std::vector<Light *> lights;
    FakeEditor *editor = nullptr;

private:
    QTime m_start;
};
