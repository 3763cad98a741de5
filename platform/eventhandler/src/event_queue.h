#ifndef TARVO_EVENTHANDLER_EVENT_QUEUE_H
#define TARVO_EVENTHANDLER_EVENT_QUEUE_H

// The timed task queue of one EventRunner, served by the runner's thread through Run().
//
// Contract:
//  - Order: (due time, priority, order of insertion).
//  - A task is counted in WorkTracker from the moment it is found due (on insertion, on a clock
//    advance, or by the runner thread, always under the queue lock) until it has run or been
//    dropped; callbacks are destroyed before their count is released.
//  - No task is run or destroyed with the lock held.

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "event_handler.h"
#include "inner_event.h"
#include "platform_clock.h"
#include "virtual_time_client.h"
#include "work_tracker.h"

namespace Tarvo::AppExecFwk {

class EventQueue final : public VirtualTimeClient {
public:
    using Priority = EventHandler::Priority;

    // False (and the event dropped) once the queue is stopped.
    bool Insert(uint64_t handlerId, InnerEvent::Pointer event, PlatformClock::time_point due, Priority priority);
    void Remove(uint64_t handlerId, const std::string& name);
    void RemoveAll(uint64_t handlerId);
    std::vector<EventHandler::PendingTask> Pending(uint64_t handlerId) const;

    bool IsStopped() const;
    // Final: drops every pending task and makes Run() return after the running one.
    void Stop();
    // The runner thread's loop.
    void Run();

    std::optional<PlatformClock::time_point> NextDue() override;
    void OnTimeAdvanced() override;

private:
    struct Key {
        PlatformClock::time_point due;
        Priority priority;
        uint64_t sequence;
        bool operator<(const Key& other) const;
    };
    struct Entry {
        // Declared first so it is released last: quiet must mean the callback is gone too.
        std::optional<WorkTracker::Token> work;
        uint64_t handlerId;
        InnerEvent::Pointer event;
    };
    using Tasks = std::map<Key, Entry>;

    template <typename Match>
    void RemoveMatching(Match match);
    void CountDueLocked();
    std::optional<Entry> WaitForDueTask();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Tasks tasks_;
    uint64_t nextSequence_ = 0;
    bool stopped_ = false;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_EVENTHANDLER_EVENT_QUEUE_H
