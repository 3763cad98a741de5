#include "event_queue.h"

#include <iterator>
#include <tuple>
#include <utility>

namespace Tarvo::AppExecFwk {

bool EventQueue::Key::operator<(const Key& other) const
{
    return std::tie(due, priority, sequence) < std::tie(other.due, other.priority, other.sequence);
}

bool EventQueue::Insert(uint64_t handlerId, InnerEvent::Pointer event, PlatformClock::time_point due, Priority priority)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopped_) {
            return false;
        }
        tasks_.emplace(Key{due, priority, nextSequence_++}, Entry{std::nullopt, handlerId, std::move(event)});
        CountDueLocked();
    }
    changed_.notify_one();
    return true;
}

template <typename Match>
void EventQueue::RemoveMatching(Match match)
{
    std::vector<Tasks::node_type> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = tasks_.begin(); it != tasks_.end();) {
            auto next = std::next(it);
            if (match(it->second)) {
                dropped.push_back(tasks_.extract(it));
            }
            it = next;
        }
    }
    // The dropped callbacks and their counts go here, outside the lock.
}

void EventQueue::Remove(uint64_t handlerId, const std::string& name)
{
    RemoveMatching(
        [&](const Entry& entry) { return entry.handlerId == handlerId && entry.event->GetTaskName() == name; });
}

void EventQueue::RemoveAll(uint64_t handlerId)
{
    RemoveMatching([&](const Entry& entry) { return entry.handlerId == handlerId; });
}

std::vector<EventHandler::PendingTask> EventQueue::Pending(uint64_t handlerId) const
{
    std::vector<EventHandler::PendingTask> pending;
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [key, entry] : tasks_) {
        if (entry.handlerId == handlerId) {
            pending.push_back({entry.event->GetTaskName(), key.due, key.priority, entry.event->GetCaller()});
        }
    }
    return pending;
}

bool EventQueue::IsStopped() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return stopped_;
}

void EventQueue::Stop()
{
    Tasks dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
        dropped.swap(tasks_);
    }
    changed_.notify_all();
    // The dropped tasks go here, outside the lock.
}

void EventQueue::Run()
{
    while (auto entry = WaitForDueTask()) {
        // The entry, and with it the task's work count, goes at the end of each turn.
        entry->event->GetTaskCallback()();
    }
}

std::optional<PlatformClock::time_point> EventQueue::NextDue()
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (tasks_.empty()) {
        return std::nullopt;
    }
    return tasks_.begin()->first.due;
}

void EventQueue::OnTimeAdvanced()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        CountDueLocked();
    }
    changed_.notify_one();
}

// Due tasks are a prefix of the queue, and counted ones a prefix of that, as time only moves on.
void EventQueue::CountDueLocked()
{
    const auto now = PlatformClock::now();
    for (auto& [key, entry] : tasks_) {
        if (key.due > now) {
            break;
        }
        if (!entry.work) {
            entry.work.emplace();
        }
    }
}

std::optional<EventQueue::Entry> EventQueue::WaitForDueTask()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        if (stopped_) {
            return std::nullopt;
        }
        CountDueLocked();
        if (!tasks_.empty() && tasks_.begin()->second.work) {
            return std::move(tasks_.extract(tasks_.begin()).mapped());
        }
        // Virtual time moves only through OnTimeAdvanced, which wakes us.
        if (tasks_.empty() || PlatformClock::IsVirtual()) {
            changed_.wait(lock);
        } else {
            changed_.wait_for(lock, tasks_.begin()->first.due - PlatformClock::now());
        }
    }
}

}  // namespace Tarvo::AppExecFwk
