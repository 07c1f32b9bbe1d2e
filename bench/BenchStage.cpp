#include "Measure.h"

#include "StageMap.h"
#include "StageView.h"

#include <QImage>
#include <QPainter>
#include <QRadialGradient>
#include <QTest>

#include <cmath>
#include <vector>

namespace {

constexpr QSize viewSize(1000, 700);
constexpr int columns = 50;
constexpr double radius = 20; // of a light's glow, about the stage's for so many lights

void stageSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(2000)->Unit(benchmark::kMillisecond);
}

QPointF place(int light, int count)
{
    const int rows = (count + columns - 1) / columns;
    const int row = light / columns;
    const int column = light % columns;
    return {(column + 0.5) / columns, (row + 0.5) / rows};
}

// Every light shows something else in every frame, and none is dark.
double brightness(int light, int frame)
{
    return 0.1 + 0.9 * std::fmod(light * 0.37 + frame * 0.113, 1.0);
}

// The reference: one gradient a light, added to what is there.
void gradientALight(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    QImage image(viewSize, QImage::Format_RGB32);
    int frame = 0;
    bench::measureReference(state, "gradient a light", [&] {
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_Plus);
        painter.setPen(Qt::NoPen);
        for (int light = 0; light < count; ++light) {
            const QPointF centre = place(light, count);
            const QPointF middle(centre.x() * viewSize.width(), centre.y() * viewSize.height());
            QRadialGradient gradient(middle, radius);
            const double shown = brightness(light, frame);
            gradient.setColorAt(0, QColor::fromRgbF(1, 0.9F, 0.7F, static_cast<float>(shown)));
            gradient.setColorAt(1, Qt::transparent);
            painter.setBrush(gradient);
            painter.drawEllipse(middle, radius, radius);
        }
        ++frame;
    });
}

// A map of lights, and a view of it on the screen.
class ShownStage
{
public:
    explicit ShownStage(int count)
    {
        for (int light = 0; light < count; ++light)
            lights.push_back(map.addLight(static_cast<quint32>(light + 1), QString::number(light),
                                          place(light, count)));
        view.resize(viewSize);
        view.setMap(&map);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            qFatal("the stage is not shown");
    }

    void light(int frame)
    {
        for (size_t light = 0; light < lights.size(); ++light) {
            lights[light]->reset();
            lights[light]->draw(brightness(static_cast<int>(light), frame), 0, 0);
        }
    }

    rehearsal::StageMap map;
    std::vector<rehearsal::StageLight *> lights;
    rehearsal::StageView view;
};

void stageFrame(benchmark::State &state)
{
    ShownStage stage(static_cast<int>(state.range(0)));
    int frame = 0;
    bench::measure(state, "gradient a light", [&] {
        stage.light(frame++);
        stage.view.showFrame();
        stage.view.repaint();
    });
    const QImage before = stage.view.grab().toImage();
    stage.light(frame);
    stage.view.showFrame();
    if (stage.view.grab().toImage() == before)
        state.SkipWithError("a frame changed nothing");
}

// What a frame costs while nothing moves.
void stageSteadyFrame(benchmark::State &state)
{
    ShownStage stage(static_cast<int>(state.range(0)));
    stage.light(0);
    stage.view.showFrame();
    bench::measure(state, "gradient a light", [&] { stage.view.showFrame(); });
}

} // namespace

BENCHMARK(gradientALight)->Name("a gradient a light")->Apply(stageSizes);
BENCHMARK(stageFrame)->Name("stage, a frame, all change")->Apply(stageSizes);
BENCHMARK(stageSteadyFrame)->Name("stage, a frame, none changes")->Apply(stageSizes);
