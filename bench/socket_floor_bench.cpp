// The socket transport's floors: 64-byte round trips over a raw SEQPACKET pair (threads placed by
// the scheduler, then both on one CPU; the same with the echo in a child process), and one-way
// SEQPACKET messages per second, between two threads and in bursts to a child process.

#include <benchmark/benchmark.h>

#include "bench_measure.h"
#include "floor_sockets.h"

namespace Tarvo::Bench {
namespace {
constexpr uint64_t kOneWayBatch = 10000;

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

void FloorSeqpacketOneWay(benchmark::State& state)
{
    SeqpacketSink sink(kOneWayBatch);
    MeasureOneWay(state, sink, kOneWayBatch);
}

// A burst of state.range(0) messages to a child process, until it has them all.
void FloorSeqpacketProcessBatch(benchmark::State& state)
{
    const auto batch = static_cast<uint64_t>(state.range(0));
    SeqpacketProcessSink sink(batch);
    MeasureOneWay(state, sink, batch);
}

BENCHMARK_CAPTURE(FloorSeqpacketRoundTrip, default_placement, false)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketProcessRoundTrip, default_placement, false)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorSeqpacketProcessRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(FloorSeqpacketOneWay)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FloorSeqpacketProcessBatch)->Arg(600)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Tarvo::Bench
