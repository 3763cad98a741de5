// The transports' floors: 64-byte round trips over a raw SEQPACKET pair (threads placed by the
// scheduler, then both on one CPU; the same with the echo in a child process), one-way SEQPACKET messages per second,
// and an eventfd hand-off round trip between two threads.

#include <benchmark/benchmark.h>
#include <sched.h>

#include <optional>

#include "floor_sockets.h"

namespace Tarvo::Bench {
namespace {
using Clock = LatencySamples::Clock;
constexpr uint64_t kOneWayBatch = 10000;

// Where both threads run: anywhere, or the CPU the benchmark thread is on now.
std::optional<int> Placement(bool oneCpu)
{
    const int cpu = sched_getcpu();
    return oneCpu && cpu >= 0 ? std::optional<int>(cpu) : std::nullopt;
}

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
    LatencySamples samples;
    samples.Reserve(state.max_iterations);
    for (auto _ : state) {
        const auto start = Clock::now();
        if (!trip(pair)) {
            state.SkipWithError("round trip failed");
            break;
        }
        samples.Add(Clock::now() - start);
    }
    samples.Report(state);
}

void FloorSeqpacketRoundTrip(benchmark::State& state, bool oneCpu)
{
    FloorMessage message{};
    MeasureRoundTrips<SeqpacketEcho>(state, oneCpu, [&](SeqpacketEcho& echo) { return echo.RoundTrip(message); });
}

void FloorSeqpacketProcessRoundTrip(benchmark::State& state, bool oneCpu)
{
    FloorMessage message{};
    MeasureRoundTrips<SeqpacketProcessEcho>(state, oneCpu,
                                            [&](SeqpacketProcessEcho& echo) { return echo.RoundTrip(message); });
}

void FloorEventfdRoundTrip(benchmark::State& state, bool oneCpu)
{
    MeasureRoundTrips<EventfdPingPong>(state, oneCpu, [](EventfdPingPong& pair) { return pair.RoundTrip(); });
}

void FloorSeqpacketOneWay(benchmark::State& state)
{
    SeqpacketSink sink(kOneWayBatch);
    const FloorMessage message{};
    if (!sink.Ok()) {
        state.SkipWithError("cannot set up the pair");
        return;
    }
    for (auto _ : state) {
        if (!sink.SendBatch(message)) {
            state.SkipWithError("send failed");
            break;
        }
    }
    state.counters["msgs_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations() * kOneWayBatch), benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(FloorSeqpacketRoundTrip, default_placement, false)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketProcessRoundTrip, default_placement, false)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketProcessRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(FloorSeqpacketOneWay)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FloorEventfdRoundTrip, default_placement, false)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorEventfdRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Tarvo::Bench
