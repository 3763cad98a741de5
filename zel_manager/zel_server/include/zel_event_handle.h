#ifndef ZEL_MANAGER_ZEL_EVENT_HANDLE_H
#define ZEL_MANAGER_ZEL_EVENT_HANDLE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "event_handler.h"
#include "event_runner.h"

namespace Tarvo::Vantel {

// The service's one ordered task queue: every deferred or asynchronous piece of work runs, one
// at a time, on the runner thread "zel_manager_service_handler".
//
// Contract:
//  - Delays are milliseconds; every post has the platform's LOW priority.
//  - Only tasks posted with PostEvent can be withdrawn, by name, and only before they begin.
//    A second PostEvent of a name does not cancel the first: both run unless RemoveEvent is called
//    between them. Once a task of a name has begun, RemoveEvent of that name does nothing until
//    the name is posted again.
//  - SetAnimationDelayDelete keeps at most one "ANIMATION_DELAYED_DELETE" task pending (3000 ms).
//  - Without a handler (the runner could not be made) every operation only logs a warning.
//  - The table lock is held around table accesses only, never while posting or running a task.
class EventHandle {
public:
    using Task = std::function<void()>;
    static constexpr int64_t ANIMATION_DELAYED_DELETE_MS = 3000;

    static EventHandle* GetInstance();
    // A queue on the given runner (null: no handler); the singleton makes its own runner.
    explicit EventHandle(const std::shared_ptr<AppExecFwk::EventRunner>& runner);
    ~EventHandle();
    EventHandle(const EventHandle&) = delete;
    EventHandle& operator=(const EventHandle&) = delete;

    void PostEvent(const Task& task, const std::string& name, int64_t delay);
    void RemoveEvent(const std::string& name);
    void DelayTask(const Task& task, int64_t delay);
    void ExecuteAsyncTask(const Task& task);
    void SetAnimationDelayDelete(const Task& task);
    // Whether a task of that name was posted and has neither begun nor been withdrawn.
    bool IsPending(const std::string& name);

    std::shared_ptr<AppExecFwk::EventHandler> GetHandler() const { return mHandler; }

private:
    std::shared_ptr<AppExecFwk::EventRunner> runner_;
    std::shared_ptr<AppExecFwk::EventHandler> mHandler;
    std::map<std::string, bool> startedFlags_;  // name -> its task has begun; withdrawn names go
    std::recursive_mutex mutex_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_EVENT_HANDLE_H
