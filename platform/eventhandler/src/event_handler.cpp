#include "event_handler.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "event_queue.h"
#include "hilog.h"

namespace Tarvo::AppExecFwk {
namespace {
constexpr HiviewDFX::HiLogLabel kLabel = {HiviewDFX::LOG_CORE, 0xD001100, "EventHandler"};

uint64_t NextHandlerId()
{
    static std::atomic<uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

// now + max(delay, 0), saturating instead of overflowing for absurd delays.
PlatformClock::time_point DueAfter(int64_t delayMs)
{
    const auto now = PlatformClock::now();
    const int64_t headroom = std::numeric_limits<int64_t>::max() - now.time_since_epoch().count();
    return now + PlatformClock::duration(std::clamp<int64_t>(delayMs, 0, headroom));
}
}  // namespace

EventHandler::EventHandler(const std::shared_ptr<EventRunner>& runner) : runner_(runner), id_(NextHandlerId()) {}

EventHandler::~EventHandler()
{
    RemoveAllEvents();
}

bool EventHandler::SendEvent(InnerEvent::Pointer& event, int64_t delayTime, Priority priority)
{
    InnerEvent::Pointer owned = std::move(event);
    if (!owned || !owned->HasTask()) {
        return false;
    }
    if (!runner_) {
        HiviewDFX::HiLog::Warn(kLabel, "SendEvent: handler has no runner, task '%{public}s' dropped",
                               owned->GetTaskName().c_str());
        return false;
    }
    return runner_->GetEventQueue()->Insert(id_, std::move(owned), DueAfter(delayTime), priority);
}

bool EventHandler::SendEvent(InnerEvent::Pointer&& event, int64_t delayTime, Priority priority)
{
    return SendEvent(event, delayTime, priority);
}

bool EventHandler::PostTask(InnerEvent::Callback callback, const std::string& name, int64_t delayTime,
                            Priority priority, const InnerEvent::Caller& caller)
{
    return SendEvent(InnerEvent::Get(std::move(callback), name, caller), delayTime, priority);
}

void EventHandler::RemoveTask(const std::string& name)
{
    if (runner_) {
        runner_->GetEventQueue()->Remove(id_, name);
    }
}

void EventHandler::RemoveAllEvents()
{
    if (runner_) {
        runner_->GetEventQueue()->RemoveAll(id_);
    }
}

std::vector<EventHandler::PendingTask> EventHandler::GetPendingTasks() const
{
    if (!runner_) {
        return {};
    }
    return runner_->GetEventQueue()->Pending(id_);
}

}  // namespace Tarvo::AppExecFwk
