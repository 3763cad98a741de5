#include "zel_event_handle.h"

#include "inner_event.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using AppExecFwk::InnerEvent;

constexpr const char* RUNNER_NAME = "zel_manager_service_handler";
constexpr const char* SOURCE_FILE = "zel_manager/zel_server/src/zel_event_handle";
constexpr const char* ANIMATION_DELAYED_DELETE = "ANIMATION_DELAYED_DELETE";
constexpr auto PRIORITY = EventHandler::Priority::LOW;

InnerEvent::Caller CallerOf(const char* function, int line)
{
    return InnerEvent::Caller(SOURCE_FILE, line, function);
}
}  // namespace

EventHandle* EventHandle::GetInstance()
{
    static EventHandle instance(EventRunner::Create(RUNNER_NAME));
    return &instance;
}

EventHandle::EventHandle(const std::shared_ptr<EventRunner>& runner) : runner_(runner)
{
    if (runner_ != nullptr) {
        mHandler = std::make_shared<EventHandler>(runner_);
    }
}

// Stop the runner first: a task still running must not find the table already gone.
EventHandle::~EventHandle()
{
    if (runner_ != nullptr) {
        runner_->Stop();
    }
}

void EventHandle::PostEvent(const Task& task, const std::string& name, int64_t delay)
{
    if (mHandler == nullptr) {
        ZEL_LOGW("EventHandle PostEvent error, mHandler is null");
        return;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(mutex_);
        startedFlags_[name] = false;
    }
    auto started = [this, task, name]() {
        {
            std::lock_guard<std::recursive_mutex> lock(mutex_);
            startedFlags_[name] = true;
        }
        task();
    };
    mHandler->SendEvent(InnerEvent::Get(started, name, CallerOf("PostEvent", __LINE__)), delay, PRIORITY);
}

void EventHandle::RemoveEvent(const std::string& name)
{
    if (mHandler == nullptr) {
        ZEL_LOGW("EventHandle RemoveEvent error, mHandler is null");
        return;
    }
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    auto it = startedFlags_.find(name);
    if (it != startedFlags_.end() && !it->second) {
        // RemoveTask only edits the handler's queue; it never runs a task.
        mHandler->RemoveTask(name);
        // Nothing of that name is left to withdraw, as after it began.
        startedFlags_.erase(it);
    }
}

bool EventHandle::IsPending(const std::string& name)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    auto it = startedFlags_.find(name);
    return it != startedFlags_.end() && !it->second;
}

void EventHandle::DelayTask(const Task& task, int64_t delay)
{
    if (mHandler == nullptr) {
        ZEL_LOGW("EventHandle DelayTast error, mHandler is null");
        return;
    }
    mHandler->SendEvent(InnerEvent::Get(task, std::string(), CallerOf("DelayTask", __LINE__)), delay, PRIORITY);
}

void EventHandle::ExecuteAsyncTask(const Task& task)
{
    if (mHandler == nullptr) {
        ZEL_LOGW("EventHandle ExecuteAsyncTask error, mHandler is null");
        return;
    }
    mHandler->SendEvent(InnerEvent::Get(task, std::string(), CallerOf("ExecuteAsyncTask", __LINE__)), 0, PRIORITY);
}

void EventHandle::SetAnimationDelayDelete(const Task& task)
{
    if (mHandler == nullptr) {
        ZEL_LOGW("EventHandle SetAnimationDelayDelete error, mHandler is null");
        return;
    }
    RemoveEvent(ANIMATION_DELAYED_DELETE);
    PostEvent(task, ANIMATION_DELAYED_DELETE, ANIMATION_DELAYED_DELETE_MS);
}

}  // namespace Tarvo::Vantel
