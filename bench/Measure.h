#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>

namespace bench {

/// N = 10, 100, 1000, 10000.
inline void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->RangeMultiplier(10)->Range(10, 10000);
}

/// Nanoseconds of CPU for one item of a reference loop of this run, by its name and size.
/// Benchmarks run in the order of registration, so a reference stands before what is compared with
/// it.
inline std::map<std::pair<std::string, int64_t>, double> &references()
{
    static std::map<std::pair<std::string, int64_t>, double> measured;
    return measured;
}

/// CPU time of this thread, ns.
double cpuTime();

/// Runs the loop as often as the benchmark wants; returns ns of CPU for one of state.range(0)
/// items.
template<typename Loop>
double timeItems(benchmark::State &state, Loop loop)
{
    const double start = cpuTime();
    for (auto iteration : state) {
        static_cast<void>(iteration);
        loop();
    }
    const double perItem =
        (cpuTime() - start) / double(state.iterations()) / double(state.range(0));
    state.counters["ns/item"] = perItem;
    return perItem;
}

template<typename Loop>
void measureReference(benchmark::State &state, const char *name, Loop loop)
{
    references()[{name, state.range(0)}] = timeItems(state, loop);
}

/// Reports the time of an item and its ratio to the reference of the same size.
template<typename Loop>
void measure(benchmark::State &state, const char *referenceName, Loop loop)
{
    const double perItem = timeItems(state, loop);
    const auto reference = references().find({referenceName, state.range(0)});
    if (reference != references().end())
        state.counters[std::string("x ") + referenceName] = perItem / reference->second;
}

} // namespace bench
