// The service's task runner beside the floor queue, in real time: 10 000 tasks due at once (time
// until the last has run), and 10 000 spread over a second (how late each runs).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <vector>

#include "event_handler.h"
#include "event_runner.h"
#include "floor_sockets.h"
#include "floor_task_queue.h"

namespace Tarvo::Bench {
namespace {
using Clock = LatencySamples::Clock;
constexpr int kTasks = 10000;

struct RunnerPoster {
    std::shared_ptr<AppExecFwk::EventRunner> runner = AppExecFwk::EventRunner::Create("bench_runner");
    std::shared_ptr<AppExecFwk::EventHandler> handler = std::make_shared<AppExecFwk::EventHandler>(runner);
    void Post(std::function<void()> task, int64_t delayMs) { handler->PostTask(std::move(task), "", delayMs); }
};

struct FloorPoster {
    FloorTaskQueue queue;
    void Post(std::function<void()> task, int64_t delayMs)
    {
        queue.Post(std::move(task), std::chrono::milliseconds(delayMs));
    }
};

template <class Poster>
void TasksDueAtOnce(benchmark::State& state)
{
    Poster poster;
    LatencySamples samples;
    for (auto _ : state) {
        std::promise<void> done;
        int ran = 0;
        const auto start = Clock::now();
        for (int i = 0; i < kTasks; ++i) {
            poster.Post(
                [&] {
                    if (++ran == kTasks) {
                        done.set_value();
                    }
                },
                0);
        }
        done.get_future().wait();
        const auto elapsed = Clock::now() - start;
        samples.Add(elapsed);
        state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
    }
    samples.Report(state);
}

template <class Poster>
void TasksSpreadOverASecond(benchmark::State& state)
{
    Poster poster;
    std::vector<double> late(kTasks);
    for (auto _ : state) {
        std::promise<void> done;
        int ran = 0;
        for (int i = 0; i < kTasks; ++i) {
            const int64_t delay = int64_t{i} * 1000 / kTasks;
            const auto due = Clock::now() + std::chrono::milliseconds(delay);
            poster.Post(
                [&, i, due] {
                    late[i] = std::max(0.0, std::chrono::duration<double, std::micro>(Clock::now() - due).count());
                    if (++ran == kTasks) {
                        done.set_value();
                    }
                },
                delay);
        }
        done.get_future().wait();
        std::sort(late.begin(), late.end());
        const double p99 = late[kTasks * 99 / 100];
        state.counters["p50_us"] = late[kTasks / 2];
        state.counters["p99_us"] = p99;
        state.counters["max_us"] = late.back();
        state.SetIterationTime(p99 / 1e6);
    }
}

BENCHMARK_TEMPLATE(TasksDueAtOnce, FloorPoster)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(TasksDueAtOnce, RunnerPoster)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(TasksSpreadOverASecond, FloorPoster)->UseManualTime()->Iterations(3)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(TasksSpreadOverASecond, RunnerPoster)->UseManualTime()->Iterations(3)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace Tarvo::Bench
