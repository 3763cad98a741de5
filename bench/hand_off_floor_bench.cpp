// The in-process transport's floors: an eventfd hand-off round trip between two threads (placed by
// the scheduler, then both on one CPU), two of them back to back (what a request that must reach
// another thread twice pays), and one-way messages per second through a locked queue.

#include <benchmark/benchmark.h>

#include "bench_measure.h"
#include "floor_sockets.h"

namespace Tarvo::Bench {
namespace {
constexpr uint64_t kOneWayBatch = 10000;

void FloorEventfdRoundTrip(benchmark::State& state, bool oneCpu)
{
    MeasureRoundTrips<EventfdPingPong>(state, oneCpu, [](EventfdPingPong& pair) { return pair.RoundTrip(); });
}

void FloorEventfdTwoRoundTrips(benchmark::State& state)
{
    MeasureRoundTrips<EventfdPingPong>(state, false,
                                       [](EventfdPingPong& pair) { return pair.RoundTrip() && pair.RoundTrip(); });
}

void FloorQueueOneWay(benchmark::State& state)
{
    QueueSink sink(kOneWayBatch);
    MeasureOneWay(state, sink, kOneWayBatch);
}

BENCHMARK_CAPTURE(FloorEventfdRoundTrip, default_placement, false)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(FloorEventfdRoundTrip, one_cpu, true)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(FloorEventfdTwoRoundTrips)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(FloorQueueOneWay)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Tarvo::Bench
