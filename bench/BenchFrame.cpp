#include "Measure.h"
#include "Stub.h"

#include "ChildKeys.h"
#include "MetaEffect.h"
#include "StageMap.h"

#include <algorithm>
#include <memory>
#include <random>

namespace {

// The reference of a frame: one virtual call per child through pointers, two types, shuffled.
void virtualCalls(benchmark::State &state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    std::mt19937 random(1);
    std::vector<std::unique_ptr<Effect>> children;
    for (std::size_t i = 0; i < count; ++i)
        children.push_back(bench::makeStub(nullptr, random() % 2));
    std::shuffle(children.begin(), children.end(), random);
    bench::measureReference(state, "R1", [&] {
        for (const auto &child : children)
            child->internalUpdateLights();
        benchmark::ClobberMemory();
    });
}

// A meta effect with stub children of two types, all set to play until the end of the hour.
class Playing
{
public:
    explicit Playing(int count, int running, quint32 fade = 0) : effect(&map, 0)
    {
        std::mt19937 random(1);
        for (int i = 0; i < count; ++i) {
            Effect *child = bench::makeStub(&map, random() % 2).release();
            meta::keys::eid.write(*child, static_cast<quint32>(i));
            meta::keys::begin.write(*child, meta::Millis());
            // The running ones lie scattered among the others.
            const bool isRunning = running == count || i % (count / running) == 0;
            meta::keys::end.write(*child, meta::Millis(quint32{isRunning ? 3600000u : 0u}));
            if (fade > 0)
                meta::keys::fadeIn.writeText(*child, QString::number(fade));
            effect.addChild(child);
        }
        effect.init();
        effect.setState(true);
        effect.setStartTime(QTime(12, 0));
    }

    void frame()
    {
        m_elapsed = (m_elapsed + 25) % 3000000;
        effect.updateLights(QTime(12, 0).addMSecs(m_elapsed), 0);
    }

    rehearsal::StageMap map;
    MetaEffect effect;

private:
    int m_elapsed = 0;
};

void frame(benchmark::State &state, int running, quint32 fade)
{
    const int count = static_cast<int>(state.range(0));
    Playing playing(count, running > 0 ? std::min(running, count) : count, fade);
    playing.frame();
    bench::measure(state, "R1", [&] { playing.frame(); });
}

void frameAllRunning(benchmark::State &state)
{
    frame(state, 0, 0);
}

void frameTenRunning(benchmark::State &state)
{
    frame(state, 10, 0);
}

void frameAllFading(benchmark::State &state)
{
    frame(state, 0, 3600000);
}

} // namespace

BENCHMARK(virtualCalls)->Name("R1 virtual call")->Apply(bench::sizes);
BENCHMARK(frameAllRunning)->Name("frame, all running")->Apply(bench::sizes);
BENCHMARK(frameTenRunning)->Name("frame, 10 running")->Apply(bench::sizes);
BENCHMARK(frameAllFading)->Name("frame, all fading")->Apply(bench::sizes);
