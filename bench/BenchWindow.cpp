#include "Measure.h"

#include "CreateEffect.h"
#include "EffectTypes.h"
#include "MainWindow.h"

#include <QDockWidget>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

namespace {

constexpr int lightCount = 2000;
constexpr int columns = 50;
constexpr int groupSize = 20;
constexpr int groupCount = lightCount / groupSize;
constexpr int runMs = 600'000;

void windowSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(1000)->Iterations(300)->Unit(benchmark::kMillisecond);
}

rehearsal::Show::TypeSetup types()
{
    return [](rehearsal::EffectFactory &factory) {
        rehearsal::addHostTypes(factory);
        factory.addType(QStringLiteral("Meta Effect"),
                        [](MapModel *map) { return createEffect(map, 0); });
    };
}

QString setting(const char *key, const QString &text)
{
    return QStringLiteral("<property key=\"%1\">%2</property>").arg(QLatin1String(key), text);
}

// Lights in rows, groups of neighbours, and children of all kinds that all run all the time, each
// light lit by several of them.
QByteArray showText(int childCount)
{
    QString text = QStringLiteral("<show version=\"1\"><map>");
    for (int light = 0; light < lightCount; ++light) {
        const int column = light % columns;
        const int row = light / columns;
        text += QStringLiteral("<light uid=\"%1\" name=\"Light %1\" x=\"%2\" y=\"%3\"/>")
                    .arg(light + 1)
                    .arg((column + 0.5) / columns)
                    .arg((row + 0.5) * columns / lightCount);
    }
    for (int group = 0; group < groupCount; ++group) {
        QStringList lights;
        for (int light = 0; light < groupSize; ++light)
            lights.append(QString::number(group * groupSize + light + 1));
        text +=
            QStringLiteral("<group uid=\"%1\" name=\"Group %1\" type=\"chasing\" lights=\"%2\"/>")
                .arg(group + 1)
                .arg(lights.join(u' '));
    }
    text += QStringLiteral("</map><effect type=\"Meta Effect\">");
    const QStringList kinds{"Chase", "Pulse", "Twinkle", "Ramp", "Solid"};
    for (int child = 0; child < childCount; ++child) {
        text += QStringLiteral("<effect type=\"%1\">").arg(kinds[child % kinds.size()])
                + setting("name", QStringLiteral("Child %1").arg(child + 1))
                + setting("eid", QString::number(child + 1))
                + setting("gid", QString::number(child % groupCount + 1)) + setting("level", "0.2")
                + setting("cycletime", QString::number(500 + child % 7 * 300))
                + setting("starttype", "0") + setting("startfixedtime", "0") + setting("begin", "0")
                + setting("endtype", "0") + setting("endfixedtime", QString::number(runMs))
                + setting("end", QString::number(runMs)) + setting("fadein", "2000")
                + QStringLiteral("</effect>");
    }
    return (text + QStringLiteral("</effect></show>")).toUtf8();
}

// A whole frame of the window, as often as while playing: effects, stage, timeline, clock. What a
// part costs shows when it is not painted.
void frame(benchmark::State &state, const QStringList &unpainted)
{
    QStandardPaths::setTestModeEnabled(true);
    rehearsal::MainWindow window(types());
    rehearsal::FileFault fault;
    if (!window.document().openText(showText(static_cast<int>(state.range(0))),
                                    QStringLiteral("show"), {}, &fault))
        qFatal("%s", qPrintable(fault.message()));
    window.resize(1600, 960);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        qFatal("the window is not shown");
    for (const QString &name : unpainted)
        window.findChild<QWidget *>(name)->setUpdatesEnabled(false);
    rehearsal::Playback &playback = window.playback();
    playback.play();
    QTest::qWait(200);
    double effects = 0;
    int frames = 0;
    const double start = bench::cpuTime();
    for (auto iteration : state) {
        static_cast<void>(iteration);
        QThread::msleep(1000 / rehearsal::Playback::framesPerSecond);
        playback.tick();
        effects += static_cast<double>(playback.frameCpuNs());
        ++frames;
        QCoreApplication::processEvents();
    }
    state.counters["frame ms"] = (bench::cpuTime() - start) / 1e6 / frames;
    state.counters["effects ms"] = effects / 1e6 / frames;
}

} // namespace

BENCHMARK_CAPTURE(frame, whole_window, QStringList{})->Apply(windowSizes);
BENCHMARK_CAPTURE(frame, without_stage, QStringList{"stage"})->Apply(windowSizes);
BENCHMARK_CAPTURE(frame, without_stage_and_timeline, QStringList{"stage", "timeline"})
    ->Apply(windowSizes);
