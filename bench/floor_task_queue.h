#ifndef ZEL_BENCH_FLOOR_TASK_QUEUE_H
#define ZEL_BENCH_FLOOR_TASK_QUEUE_H

// The floor for a task runner: a minimal delayed-task queue (a heap, a mutex, one thread) with
// nothing else: no names, no removal, no work accounting.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

namespace Tarvo::Bench {

class FloorTaskQueue {
public:
    using Clock = std::chrono::steady_clock;

    FloorTaskQueue() : thread_([this] { Run(); }) {}
    ~FloorTaskQueue()
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopped_ = true;
        }
        changed_.notify_one();
        thread_.join();
    }

    void Post(std::function<void()> task, std::chrono::milliseconds delay)
    {
        bool earliest = false;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            tasks_.push(Task{Clock::now() + delay, sequence_++, std::move(task)});
            earliest = tasks_.top().sequence == sequence_ - 1;
        }
        if (earliest) {
            changed_.notify_one();
        }
    }

private:
    struct Task {
        Clock::time_point due;
        uint64_t sequence;
        std::function<void()> run;
        bool operator>(const Task& other) const
        {
            return due != other.due ? due > other.due : sequence > other.sequence;
        }
    };

    void Run()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!stopped_) {
            if (tasks_.empty()) {
                changed_.wait(lock);
            } else if (tasks_.top().due > Clock::now()) {
                changed_.wait_until(lock, tasks_.top().due);
            } else {
                std::function<void()> run = std::move(const_cast<Task&>(tasks_.top()).run);
                tasks_.pop();
                lock.unlock();
                run();
                lock.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::priority_queue<Task, std::vector<Task>, std::greater<>> tasks_;
    uint64_t sequence_ = 0;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace Tarvo::Bench

#endif  // ZEL_BENCH_FLOOR_TASK_QUEUE_H
