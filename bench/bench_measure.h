#ifndef ZEL_BENCH_BENCH_MEASURE_H
#define ZEL_BENCH_BENCH_MEASURE_H

// How every benchmark reports alike: one latency sample per iteration, as p50_us and p99_us
// counters, or messages per second; short operations are timed in batches so that reading the
// clock does not dominate what is measured.

#include <benchmark/benchmark.h>
#include <sched.h>

#include <cstdint>
#include <optional>

#include "floor_sockets.h"

namespace Tarvo::Bench {

// Runs `op` `batch` times per iteration; each iteration gives one sample, the mean of its batch.
// `op` returns false on failure, which ends the benchmark with an error.
template <class Op>
void MeasureLatency(benchmark::State& state, Op&& op, int batch = 1)
{
    LatencySamples samples;
    samples.Reserve(state.max_iterations);
    for (auto _ : state) {
        const auto start = LatencySamples::Clock::now();
        for (int i = 0; i < batch; ++i) {
            if (!op()) {
                state.SkipWithError("the operation failed");
                return;
            }
        }
        samples.Add((LatencySamples::Clock::now() - start) / batch);
    }
    samples.Report(state);
}

inline void ReportRate(benchmark::State& state, uint64_t messagesPerIteration)
{
    state.counters["msgs_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations() * messagesPerIteration), benchmark::Counter::kIsRate);
}

// Batches of one-way messages through `sink`, whose SendBatch() returns once the receiver has the
// whole batch; reported as messages per second.
template <class Sink>
void MeasureOneWay(benchmark::State& state, Sink& sink, uint64_t batch)
{
    const FloorMessage message{};
    if (!sink.Ok()) {
        state.SkipWithError("cannot set up the receiver");
        return;
    }
    for (auto _ : state) {
        if (!sink.SendBatch(message)) {
            state.SkipWithError("sending failed");
            return;
        }
    }
    ReportRate(state, batch);
}

// Where both threads of a pair run: anywhere, or the CPU the benchmark thread is on now.
inline std::optional<int> Placement(bool oneCpu)
{
    const int cpu = sched_getcpu();
    return oneCpu && cpu >= 0 ? std::optional<int>(cpu) : std::nullopt;
}

// Round trips through a pair of threads (or processes) placed as `oneCpu` says.
template <class Pair, class Trip>
void MeasureRoundTrips(benchmark::State& state, bool oneCpu, Trip trip)
{
    const std::optional<int> cpu = Placement(oneCpu);
    ScopedPin pin(cpu);
    Pair pair(cpu);
    if (!pair.Ok() || (cpu && !pin.Pinned())) {
        state.SkipWithError("cannot set up the pair");
        return;
    }
    MeasureLatency(state, [&] { return trip(pair); });
}

}  // namespace Tarvo::Bench

#endif  // ZEL_BENCH_BENCH_MEASURE_H
