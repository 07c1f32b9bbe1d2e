#include <benchmark/benchmark.h>

#include <QApplication>

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    qputenv("QT_QPA_PLATFORM", "offscreen"); // the editor needs an application, no display
    const QApplication application(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
