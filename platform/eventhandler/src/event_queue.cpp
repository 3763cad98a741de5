#include "event_queue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace Tarvo::AppExecFwk {
namespace {
// The poster and the runner hold the lock for a few map operations; waiting that out in the kernel
// costs a sleep and a wake-up, far more than a short spin.
std::unique_lock<std::mutex> LockQueue(std::mutex& mutex)
{
    constexpr int kSpins = 200;
    for (int i = 0; i < kSpins; ++i) {
        if (mutex.try_lock()) {
            return std::unique_lock<std::mutex>(mutex, std::adopt_lock);
        }
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }
    return std::unique_lock<std::mutex>(mutex);
}
}  // namespace

bool EventQueue::Key::operator<(const Key& other) const
{
    return std::tie(due, priority, sequence) < std::tie(other.due, other.priority, other.sequence);
}

bool EventQueue::Insert(uint64_t handlerId, InnerEvent::Pointer event, PlatformClock::time_point due, Priority priority)
{
    bool wake = false;
    {
        auto lock = LockQueue(mutex_);
        if (stopped_) {
            return false;
        }
        const Key key{due, priority, nextSequence_++};
        // A new task mostly goes last by due time (time only moves on), often last by name too; a
        // right hint saves the search, a wrong one costs only the search.
        auto indexed = byName_.emplace_hint(byName_.end(), std::make_pair(handlerId, event->GetTaskName()), key);
        auto inserted = tasks_.emplace_hint(tasks_.end(), key, Entry{std::nullopt, std::move(event), indexed});
        peakTasks_ = std::max(peakTasks_, tasks_.size());
        const auto now = PlatformClock::now();
        if (due <= std::max(countedThrough_, now)) {
            inserted->second.work.emplace();
        } else {
            nextUncounted_ = std::min(nextUncounted_, due);
        }
        CountDueLocked(now);
        wake = Sequencer::Enabled() ? OfferTurnLocked() : inserted == tasks_.begin();
    }
    if (wake) {
        changed_.notify_one();
    }
    return true;
}

void EventQueue::DropLocked(std::vector<Entry>& dropped, NameIndex::iterator first, NameIndex::iterator last)
{
    for (auto it = first; it != last; ++it) {
        dropped.push_back(std::move(tasks_.extract(it->second).mapped()));
    }
    byName_.erase(first, last);
    TrimLocked();
}

void EventQueue::TrimLocked()
{
    if (tasks_.empty() && peakTasks_ > kKeptTasks) {
        nodes_.release();
        peakTasks_ = 0;
    }
}

void EventQueue::Remove(uint64_t handlerId, const std::string& name)
{
    std::vector<Entry> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    auto [first, last] = byName_.equal_range(std::make_pair(handlerId, name));
    DropLocked(dropped, first, last);
    // The dropped callbacks and their counts go after the lock (declared before it).
}

void EventQueue::RemoveAll(uint64_t handlerId)
{
    std::vector<Entry> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    DropLocked(dropped, byName_.lower_bound(std::make_pair(handlerId, std::string())),
               byName_.lower_bound(std::make_pair(handlerId + 1, std::string())));
}

std::vector<EventHandler::PendingTask> EventQueue::Pending(uint64_t handlerId) const
{
    std::vector<std::pair<Key, EventHandler::PendingTask>> found;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto last = byName_.lower_bound(std::make_pair(handlerId + 1, std::string()));
        for (auto it = byName_.lower_bound(std::make_pair(handlerId, std::string())); it != last; ++it) {
            const InnerEvent& event = *tasks_.at(it->second).event;
            found.push_back(
                {it->second, {event.GetTaskName(), it->second.due, it->second.priority, event.GetCaller()}});
        }
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<EventHandler::PendingTask> pending;
    for (auto& [key, task] : found) {
        pending.push_back(std::move(task));
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
    std::vector<Entry> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
        dropped.reserve(tasks_.size());
        for (auto& [key, entry] : tasks_) {
            dropped.push_back(std::move(entry));
        }
        tasks_.clear();
        byName_.clear();
        TrimLocked();
        if (turnState_ == TurnState::RESERVED) {
            Sequencer::Cancel(turn_);
            turnState_ = TurnState::NONE;
        }
    }
    changed_.notify_all();
    // The dropped tasks go here, outside the lock.
}

void EventQueue::Run()
{
    while (auto entry = WaitForDueTask()) {
        entry->event->GetTaskCallback()();
        // The callback, then its work count, go before the next turn is offered.
        entry.reset();
        DoneRunning();
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
    bool wake = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        CountDueLocked(PlatformClock::now());
        wake = Sequencer::Enabled() ? OfferTurnLocked() : HasDueLocked();
    }
    if (wake) {
        changed_.notify_one();
    }
}

// Tasks become due in key order as time moves on, so only those past the last count are new.
void EventQueue::CountDueLocked(PlatformClock::time_point now)
{
    if (now <= countedThrough_) {
        return;
    }
    if (nextUncounted_ > now) {
        countedThrough_ = now;
        return;
    }
    auto it = tasks_.lower_bound(Key{countedThrough_ + PlatformClock::duration(1), Priority::VIP, 0});
    for (; it != tasks_.end() && it->first.due <= now; ++it) {
        if (!it->second.work) {
            it->second.work.emplace();
        }
    }
    nextUncounted_ = it != tasks_.end() ? it->first.due : PlatformClock::time_point::max();
    countedThrough_ = now;
}

bool EventQueue::HasDueLocked() const
{
    return !tasks_.empty() && tasks_.begin()->second.work.has_value();
}

bool EventQueue::OfferTurnLocked()
{
    if (!Sequencer::Enabled() || turnState_ != TurnState::NONE || !HasDueLocked()) {
        return false;
    }
    turn_ = Sequencer::Reserve();
    turnState_ = TurnState::RESERVED;
    return true;
}

EventQueue::Entry EventQueue::TakeFirstLocked()
{
    Entry entry = std::move(tasks_.extract(tasks_.begin()).mapped());
    byName_.erase(entry.indexed);
    TrimLocked();
    return entry;
}

std::optional<EventQueue::Entry> EventQueue::WaitForDueTask()
{
    auto lock = LockQueue(mutex_);
    for (;;) {
        if (stopped_) {
            return std::nullopt;
        }
        CountDueLocked(PlatformClock::now());
        if (Sequencer::Enabled()) {
            if (turnState_ != TurnState::RESERVED) {
                changed_.wait(lock);
            } else if (auto entry = TakeTurn(lock)) {
                return entry;
            }
            continue;
        }
        if (HasDueLocked()) {
            return TakeFirstLocked();
        }
        // Virtual time moves only through OnTimeAdvanced, which wakes us.
        if (tasks_.empty() || PlatformClock::IsVirtual()) {
            changed_.wait(lock);
        } else {
            changed_.wait_until(lock, PlatformClock::RealTimeOf(tasks_.begin()->first.due));
        }
    }
}

// Waits for the reserved turn; nothing when it was cancelled or nothing is left to run for it.
std::optional<EventQueue::Entry> EventQueue::TakeTurn(std::unique_lock<std::mutex>& lock)
{
    const Sequencer::Turn turn = turn_;
    lock.unlock();
    const bool taken = Sequencer::Take(turn);
    lock.lock();
    if (!taken) {
        return std::nullopt;
    }
    if (!stopped_ && HasDueLocked()) {
        turnState_ = TurnState::RUNNING;
        return TakeFirstLocked();
    }
    // Removed or stopped meanwhile: the turn passes without work.
    turnState_ = TurnState::NONE;
    lock.unlock();
    Sequencer::Finish();
    lock.lock();
    return std::nullopt;
}

void EventQueue::DoneRunning()
{
    // Only a sequenced runner has a turn to pass on; the others need not take the lock again.
    if (Sequencer::Enabled()) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (turnState_ == TurnState::RUNNING) {
            turnState_ = TurnState::NONE;
            OfferTurnLocked();
        }
    }
    Sequencer::Finish();
}

}  // namespace Tarvo::AppExecFwk
