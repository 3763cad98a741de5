#ifndef TARVO_EVENTHANDLER_EVENT_RUNNER_H
#define TARVO_EVENTHANDLER_EVENT_RUNNER_H

// A thread with a queue of timed tasks; EventHandlers post to it.
//
// Contract:
//  - Create() starts the thread at once. It works for the virtual process of the creating thread
//    and carries the first 15 characters of the name as its OS thread name.
//  - Tasks run one at a time on that thread, ordered by (due time, priority, order of sending).
//    In real mode the thread waits for the steady clock; in virtual mode for VirtualClock.
//  - A task counts as work in flight (WorkTracker) from the moment it is due until it has run or
//    been dropped; a task not yet due does not count.
//  - Stop() (also the destructor) is final: pending tasks are dropped, the running one finishes,
//    the thread ends and is joined (detached instead when Stop() runs on the runner's own thread).

#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace Tarvo::AppExecFwk {

class EventQueue;

class EventRunner {
public:
    enum class ThreadMode { NEW_THREAD };

    static std::shared_ptr<EventRunner> Create(const std::string& threadName, ThreadMode mode = ThreadMode::NEW_THREAD);

    EventRunner(const EventRunner&) = delete;
    EventRunner& operator=(const EventRunner&) = delete;
    ~EventRunner();

    const std::string& GetRunnerThreadName() const { return threadName_; }
    bool IsRunning() const;
    void Stop();

private:
    friend class EventHandler;
    explicit EventRunner(const std::string& threadName);
    const std::shared_ptr<EventQueue>& GetEventQueue() const { return queue_; }

    const std::string threadName_;
    const std::shared_ptr<EventQueue> queue_;
    std::mutex mutex_;
    std::thread thread_;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_EVENTHANDLER_EVENT_RUNNER_H
