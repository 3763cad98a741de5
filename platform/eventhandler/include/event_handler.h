#ifndef TARVO_EVENTHANDLER_EVENT_HANDLER_H
#define TARVO_EVENTHANDLER_EVENT_HANDLER_H

// Posts tasks to an EventRunner and manages the ones it posted.
//
// Contract:
//  - SendEvent/PostTask queue a task due at now + max(delay, 0) ms on the runner. They return
//    false for a null event, an event without a task, a handler without runner or a stopped
//    runner. SendEvent always takes the event: the Pointer is empty afterwards, whatever the result.
//  - RemoveTask(name) drops every queued task of this handler with exactly that name (the empty
//    name included); a task already running is not affected. RemoveAllEvents drops all of them.
//  - A handler's queued tasks die with it: the destructor removes them.
//  - GetPendingTasks lists this handler's queued tasks in run order (tests and dumps).

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "event_runner.h"
#include "inner_event.h"
#include "platform_clock.h"

namespace Tarvo::AppExecFwk {

class EventHandler : public std::enable_shared_from_this<EventHandler> {
public:
    enum class Priority : uint32_t { VIP = 0, IMMEDIATE, HIGH, LOW, IDLE };

    struct PendingTask {
        std::string name;
        PlatformClock::time_point due;
        Priority priority;
        InnerEvent::Caller caller;
    };

    explicit EventHandler(const std::shared_ptr<EventRunner>& runner = nullptr);
    EventHandler(const EventHandler&) = delete;
    EventHandler& operator=(const EventHandler&) = delete;
    virtual ~EventHandler();

    bool SendEvent(InnerEvent::Pointer& event, int64_t delayTime = 0, Priority priority = Priority::LOW);
    bool SendEvent(InnerEvent::Pointer&& event, int64_t delayTime = 0, Priority priority = Priority::LOW);
    bool PostTask(InnerEvent::Callback callback, const std::string& name = std::string(), int64_t delayTime = 0,
                  Priority priority = Priority::LOW, const InnerEvent::Caller& caller = {});

    void RemoveTask(const std::string& name);
    void RemoveAllEvents();

    std::shared_ptr<EventRunner> GetEventRunner() const { return runner_; }
    std::vector<PendingTask> GetPendingTasks() const;

private:
    const std::shared_ptr<EventRunner> runner_;
    // Tasks are matched by id, not address: a new handler may reuse a dead one's address.
    const uint64_t id_;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_EVENTHANDLER_EVENT_HANDLER_H
