#ifndef TARVO_UTILS_VIRTUAL_PROCESS_H
#define TARVO_UTILS_VIRTUAL_PROCESS_H

// A virtual process: one emulated process of the device, inside the one real process. It has an
// identity (what IPCSkeleton reports to the processes it calls) and its own pool of worker threads
// (its IPC threads). Every thread works for exactly one virtual process: pool threads and threads
// started with StartThread() for theirs, any other thread for the host process unless a
// ScopedProcess says otherwise.
//
// Contract:
//  - Post() runs the work on one of the process's threads, started on demand up to kMaxThreads (a
//    new thread whenever queued work outnumbers idle threads, so a handler waiting on more work of
//    its own process is not starved), and counts it in WorkTracker from queueing until it returns.
//  - In virtual time each posted work reserves its turn (Sequencer) when posted and runs holding
//    it. PostNext() queues work before everything waiting, for a hand-off: a synchronous request
//    whose sender waits for it; it gets a thread even past kMaxThreads, since the others may all
//    be waiting for later turns.
//  - PostTurn() queues work whose turn was reserved already, maybe in another real process (a
//    message that carries its turn); the turn becomes this process's. A turn cancelled meanwhile
//    (its reserver died) is replaced by one at the back of the line.
//  - PostInLane() queues work in the process's lane: work of one key runs one at a time, in the
//    order posted; the lane's work is run by drains on the pool's threads, one drain unless a work
//    blocks (LetLaneGoOn), so a burst is handed over with one wake-up. In virtual time each work
//    still reserves its own turn when posted and runs holding it.
//  - Kill() is terminal: IsAlive() turns false, Post() is refused, kill observers run once on the
//    calling thread. Work already running finishes; work already queued still runs, and must check
//    IsAlive() itself if a dead process must not act.
//  - The destructor joins the process's threads.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "process_session.h"
#include "sequencer.h"
#include "work_tracker.h"

namespace Tarvo {

class VirtualProcess : public ProcessSession, public std::enable_shared_from_this<VirtualProcess> {
public:
    static constexpr size_t kMaxThreads = 16;
    using KillObserver = std::function<void(VirtualProcess& killed)>;

    static std::shared_ptr<VirtualProcess> Create(ProcessIdentity identity);
    // The process the calling thread works for.
    static std::shared_ptr<VirtualProcess> Current();
    // The process of threads nobody assigned: the real process itself, a native process unless
    // SetHostIdentity() said otherwise.
    static std::shared_ptr<VirtualProcess> Host();
    // The identity the host process takes; false once Host() has been used.
    static bool SetHostIdentity(ProcessIdentity identity);

    VirtualProcess(const VirtualProcess&) = delete;
    VirtualProcess& operator=(const VirtualProcess&) = delete;
    ~VirtualProcess() override;

    const ProcessIdentity& Identity() const override { return identity_; }
    int32_t Pid() const { return identity_.pid; }
    const std::string& Name() const { return identity_.name; }
    bool IsAlive() const override;

    void Kill();
    bool Post(std::function<void()> work);
    bool PostNext(std::function<void()> work);
    bool PostTurn(Sequencer::Turn turn, std::function<void()> work);
    // `turn`: one reserved already, maybe in another real process, taken over as PostTurn() does.
    bool PostInLane(const void* key, std::function<void()> work, Sequencer::Turn turn = Sequencer::kNoTurn);
    // Called by lane work about to block (a synchronous request it sends): the lane's other keys go
    // on on another thread meanwhile. Does nothing on other threads.
    static void LetLaneGoOn();

    // While one lives, the wake-ups of lanes this thread starts are held back and given when the
    // outermost one ends: a handler sending a burst of one-way requests wakes each receiving process
    // once, after the burst, instead of being preempted by the first receiver. Whoever blocks inside
    // one must call WakeHeldLanes() first. Scopes nest.
    class HoldLaneWakes {
    public:
        HoldLaneWakes();
        ~HoldLaneWakes();
        HoldLaneWakes(const HoldLaneWakes&) = delete;
        HoldLaneWakes& operator=(const HoldLaneWakes&) = delete;
    };
    // Gives the wake-ups held so far on this thread.
    static void WakeHeldLanes();
    // A thread that works for this process (event runners, delivery threads).
    std::thread StartThread(std::function<void()> body);

    // Observers live for the rest of the real process; they are called for every Kill().
    static void AddKillObserver(KillObserver observer);

private:
    explicit VirtualProcess(ProcessIdentity identity);
    struct Work {
        std::function<void()> run;
        WorkTracker::Token token;
        Sequencer::Turn turn;
    };
    using LaneWork = std::pair<const void*, Work>;
    // Shared with the worker threads, so that a thread detached by a destructor running on it
    // never touches freed memory.
    struct Pool {
        std::mutex mutex;
        std::condition_variable workReady;
        std::deque<Work> queue;
        std::vector<std::thread> threads;
        size_t idle = 0;
        bool alive = true;
        bool stopping = false;
        // The lane: work in posting order, the keys whose work a drain has taken, and the drains
        // posted or running.
        std::deque<LaneWork> lane;
        std::vector<const void*> laneBusy;
        size_t laneDrains = 0;
    };
    // LANE: a drain of the lane, queued before all work with turns (it takes none of its own).
    enum class Order { BACK, FIRST, GIVEN, LANE };
    bool Enqueue(std::function<void()> work, Order order, Sequencer::Turn turn);
    void EnqueueLocked(std::function<void()> work, Order order, Sequencer::Turn turn);
    void StartDrainLocked();
    static void WakeForLane(const std::shared_ptr<Pool>& pool);
    static std::optional<LaneWork> NextLaneWork(Pool& pool, const void* done, bool detached);
    static void DrainLane(const std::shared_ptr<Pool>& pool);
    static void RunHolding(Work& work);
    static void WorkerLoop(const std::shared_ptr<Pool>& pool);

    const ProcessIdentity identity_;
    const std::shared_ptr<Pool> pool_ = std::make_shared<Pool>();
    static thread_local int tHoldDepth_;
    static thread_local std::vector<std::shared_ptr<Pool>> tHeldWakes_;
};

// Makes the calling thread work for a process until the scope ends.
class ScopedProcess {
public:
    explicit ScopedProcess(std::shared_ptr<VirtualProcess> process);
    ~ScopedProcess();
    ScopedProcess(const ScopedProcess&) = delete;
    ScopedProcess& operator=(const ScopedProcess&) = delete;

private:
    std::shared_ptr<VirtualProcess> process_;
    std::weak_ptr<VirtualProcess> previous_;
    bool hadPrevious_;
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_VIRTUAL_PROCESS_H
