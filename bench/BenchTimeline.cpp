#include "Measure.h"

#include "EffectFactory.h"
#include "EffectTypes.h"
#include "MetaEffect.h"
#include "StageMap.h"
#include "TimelineView.h"

#include <QApplication>

namespace {

// A view of so many children, each linked to the one before it. Ten run at any time.
class ShownChain
{
public:
    explicit ShownChain(int count) : effect(&map, 0), m_count(count)
    {
        rehearsal::addHostTypes(m_factory);
        for (int i = 0; i < count; ++i) {
            Effect *child = m_factory.make(QStringLiteral("Solid"));
            set(child, "eid", i + 1);
            set(child, "begin", 100 * i);
            set(child, "end", 100 * i + 100 * running);
            if (i > 0) {
                set(child, "starttype", 1);
                set(child, "startlinkeid", i);
            }
            child->setProperty(QStringLiteral("name"), QStringLiteral("Effect %1").arg(i));
            effect.addChild(child);
            m_children.push_back(child);
        }
        effect.init();
        effect.setState(true);
        view.resize(1200, 400);
        view.setEffect(&effect);
        view.show();
        QCoreApplication::processEvents();
    }
    ~ShownChain() { view.setEffect(nullptr); }
    Q_DISABLE_COPY_MOVE(ShownChain)

    /// One frame of 25 ms: states change, the playhead moves, and what is to be painted is painted.
    void frame()
    {
        m_ms = (m_ms + 25) % (100 * m_count);
        const int now = m_ms / 100;
        m_children[std::size_t(now)]->setState(true);
        m_children[std::size_t((now + m_count - running) % m_count)]->setState(false);
        view.setPosition(quint32(m_ms));
        QCoreApplication::processEvents();
    }

    rehearsal::StageMap map;
    MetaEffect effect;
    rehearsal::TimelineView view;

private:
    static constexpr int running = 10;

    static void set(Effect *child, const char *key, int value)
    {
        child->setProperty(QString::fromLatin1(key), QString::number(value));
    }

    rehearsal::EffectFactory m_factory{map};
    std::vector<Effect *> m_children;
    int m_count;
    int m_ms = 0;
};

void timelineSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMicrosecond);
}

void timelineFrame(benchmark::State &state, bool packed)
{
    ShownChain chain(int(state.range(0)));
    chain.view.setPacked(packed);
    QCoreApplication::processEvents();
    for (auto iteration : state) {
        static_cast<void>(iteration);
        chain.frame();
    }
}

void timelineFrameOneLaneEach(benchmark::State &state)
{
    timelineFrame(state, false);
}

void timelineFramePacked(benchmark::State &state)
{
    timelineFrame(state, true);
}

// An edit: everything is read, laid out and painted anew.
void timelineRefresh(benchmark::State &state)
{
    ShownChain chain(int(state.range(0)));
    for (auto iteration : state) {
        static_cast<void>(iteration);
        chain.view.refresh();
        QCoreApplication::processEvents();
    }
}

// The same without painting.
void timelineModel(benchmark::State &state)
{
    ShownChain chain(int(state.range(0)));
    rehearsal::TimelineModel model;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        model.rebuild(&chain.effect);
        model.layOut(true);
    }
}

} // namespace

BENCHMARK(timelineFrameOneLaneEach)->Name("timeline, a frame")->Apply(timelineSizes);
BENCHMARK(timelineFramePacked)->Name("timeline, a frame, packed")->Apply(timelineSizes);
BENCHMARK(timelineRefresh)->Name("timeline, an edit")->Apply(timelineSizes);
BENCHMARK(timelineModel)->Name("timeline, reading")->Apply(timelineSizes);
