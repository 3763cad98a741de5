#ifndef TARVO_EVENTHANDLER_EVENT_QUEUE_H
#define TARVO_EVENTHANDLER_EVENT_QUEUE_H

// The timed task queue of one EventRunner, served by the runner's thread through Run().
//
// Contract:
//  - Order: (due time, priority, order of insertion). Insert, Remove of one name and taking the
//    next task cost O(log n) (plus the tasks removed); nothing walks the whole queue.
//  - The runner is woken only when the earliest task changes (or, in sequenced virtual time, when
//    it is given a turn), not for every insertion.
//  - A task is counted in WorkTracker from the moment it is found due (on insertion, on a clock
//    advance, or by the runner thread, always under the queue lock) until it has run or been
//    dropped; callbacks are destroyed before their count is released. Each task is counted once.
//  - In sequenced virtual time the runner holds one turn (Sequencer) per task it runs; the turn is
//    reserved when a task is due and the runner has none, by whoever made it due.
//  - No task is run or destroyed with the lock held.
//  - The index nodes come from a pool of the queue's own, used only under the lock, so the poster
//    and the runner do not meet in malloc for every task. Once the queue is empty, a pool that
//    held more than kKeptTasks tasks' nodes gives them back.

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory_resource>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "event_handler.h"
#include "inner_event.h"
#include "platform_clock.h"
#include "sequencer.h"
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
    // (handler, task name) to the task, for removal by name without a walk.
    using NameIndex = std::pmr::multimap<std::pair<uint64_t, std::string>, Key>;
    struct Entry {
        // Declared first so it is released last: quiet must mean the callback is gone too.
        std::optional<WorkTracker::Token> work;
        InnerEvent::Pointer event;
        NameIndex::iterator indexed;
    };
    using Tasks = std::pmr::map<Key, Entry>;
    // The runner's turn in sequenced virtual time.
    enum class TurnState { NONE, RESERVED, RUNNING };

    static constexpr size_t kKeptTasks = 1024;

    void DropLocked(std::vector<Entry>& dropped, NameIndex::iterator first, NameIndex::iterator last);
    Entry TakeFirstLocked();
    void TrimLocked();
    void CountDueLocked(PlatformClock::time_point now);
    bool HasDueLocked() const;
    // Reserves the runner's turn if a task is due and it has none; true if it did.
    bool OfferTurnLocked();
    std::optional<Entry> WaitForDueTask();
    std::optional<Entry> TakeTurn(std::unique_lock<std::mutex>& lock);
    void DoneRunning();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    // Before the indexes that draw on it.
    std::pmr::unsynchronized_pool_resource nodes_;
    Tasks tasks_{&nodes_};
    NameIndex byName_{&nodes_};
    // The most tasks held since the pool last gave its nodes back.
    size_t peakTasks_ = 0;
    uint64_t nextSequence_ = 0;
    // Every task due at or before this time is counted; tasks become due in key order.
    PlatformClock::time_point countedThrough_{PlatformClock::duration(-1)};
    // No uncounted task falls due before this (it may be earlier than the first that does).
    PlatformClock::time_point nextUncounted_ = PlatformClock::time_point::max();
    TurnState turnState_ = TurnState::NONE;
    Sequencer::Turn turn_ = Sequencer::kNoTurn;
    bool stopped_ = false;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_EVENTHANDLER_EVENT_QUEUE_H
