#include "virtual_process.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <optional>

namespace Tarvo {
namespace {
thread_local std::weak_ptr<VirtualProcess> tCurrent;
thread_local bool tAssigned = false;

// Where the thread stands in its process's lane: running lane work, or running lane work that has
// let the lane go on without it.
enum class LaneState { NONE, RUNNING, LET_GO };
thread_local LaneState tLane = LaneState::NONE;
// The process whose lane the thread drains, whatever process its work may have made it work for.
thread_local std::weak_ptr<VirtualProcess> tLaneOwner;

std::mutex& ObserverMutex()
{
    static auto* mutex = new std::mutex();
    return *mutex;
}

std::vector<VirtualProcess::KillObserver>& Observers()
{
    static auto* observers = new std::vector<VirtualProcess::KillObserver>();
    return *observers;
}

std::mutex& HostMutex()
{
    static auto* mutex = new std::mutex();
    return *mutex;
}

// Never destroyed: the host's threads may be in use until the very end of the real process.
std::atomic<std::shared_ptr<VirtualProcess>*>& HostSlot()
{
    static std::atomic<std::shared_ptr<VirtualProcess>*> host{nullptr};
    return host;
}

// Native token: type 1 in bits 28-29 of the token id.
constexpr uint32_t kHostTokenId = 1u << 28;

// This real process holds the threads of every emulated process, thousands on a big device. Recent
// kernels give a process a private futex hash sized for the CPUs, where they would all share a few
// chains; the global hash is sized for the machine. Older kernels refuse the request: nothing to do.
void UseGlobalFutexHash()
{
    constexpr int kPrFutexHash = 78;
    constexpr int kPrFutexHashSetSlots = 1;
    static const bool once = [] {
        (void)prctl(kPrFutexHash, kPrFutexHashSetSlots, 0, 0, 0);
        return true;
    }();
    (void)once;
}
}  // namespace

VirtualProcess::VirtualProcess(ProcessIdentity identity) : identity_(std::move(identity)) {}

std::shared_ptr<VirtualProcess> VirtualProcess::Create(ProcessIdentity identity)
{
    UseGlobalFutexHash();
    return std::shared_ptr<VirtualProcess>(new VirtualProcess(std::move(identity)));
}

bool VirtualProcess::SetHostIdentity(ProcessIdentity identity)
{
    std::lock_guard<std::mutex> lock(HostMutex());
    if (HostSlot().load(std::memory_order_acquire) != nullptr) {
        return false;
    }
    HostSlot().store(new std::shared_ptr<VirtualProcess>(Create(std::move(identity))), std::memory_order_release);
    return true;
}

std::shared_ptr<VirtualProcess> VirtualProcess::Host()
{
    if (auto* host = HostSlot().load(std::memory_order_acquire)) {
        return *host;
    }
    SetHostIdentity(
        {static_cast<int32_t>(getpid()), static_cast<int32_t>(getuid()), kHostTokenId, kHostTokenId, "host"});
    return *HostSlot().load(std::memory_order_acquire);
}

std::shared_ptr<VirtualProcess> VirtualProcess::Current()
{
    if (tAssigned) {
        if (auto current = tCurrent.lock()) {
            return current;
        }
    }
    return Host();
}

VirtualProcess::~VirtualProcess()
{
    std::vector<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(pool_->mutex);
        pool_->stopping = true;
        threads.swap(pool_->threads);
    }
    pool_->workReady.notify_all();
    // Our threads may still need turns to finish their queued work.
    Sequencer::Yield yield;
    for (auto& thread : threads) {
        // The last reference may be dropped on one of our own threads: it cannot join itself.
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

bool VirtualProcess::IsAlive() const
{
    std::lock_guard<std::mutex> lock(pool_->mutex);
    return pool_->alive;
}

void VirtualProcess::Kill()
{
    {
        std::lock_guard<std::mutex> lock(pool_->mutex);
        if (!pool_->alive) {
            return;
        }
        pool_->alive = false;
    }
    std::vector<KillObserver> observers;
    {
        std::lock_guard<std::mutex> lock(ObserverMutex());
        observers = Observers();
    }
    for (auto& observer : observers) {
        observer(*this);
    }
}

bool VirtualProcess::Post(std::function<void()> work)
{
    return Enqueue(std::move(work), Order::BACK, Sequencer::kNoTurn);
}

bool VirtualProcess::PostNext(std::function<void()> work)
{
    return Enqueue(std::move(work), Order::FIRST, Sequencer::kNoTurn);
}

bool VirtualProcess::PostTurn(Sequencer::Turn turn, std::function<void()> work)
{
    if (!Sequencer::Adopt(turn)) {
        return Enqueue(std::move(work), Order::BACK, Sequencer::kNoTurn);
    }
    return Enqueue(std::move(work), Order::GIVEN, turn);
}

bool VirtualProcess::Enqueue(std::function<void()> work, Order order, Sequencer::Turn turn)
{
    {
        std::lock_guard<std::mutex> lock(pool_->mutex);
        if (!pool_->alive || pool_->stopping) {
            if (order == Order::GIVEN) {
                Sequencer::Cancel(turn);
            }
            return false;
        }
        if (order != Order::GIVEN) {
            turn = order == Order::FIRST ? Sequencer::ReserveFirst() : Sequencer::Reserve();
        }
        EnqueueLocked(std::move(work), order, turn);
    }
    // After the lock, so that the woken thread does not have to wait for it.
    pool_->workReady.notify_one();
    return true;
}

void VirtualProcess::EnqueueLocked(std::function<void()> work, Order order, Sequencer::Turn turn)
{
    // The pool's queue keeps the order of the turns, so a free thread always takes the earliest.
    auto at = std::upper_bound(pool_->queue.begin(), pool_->queue.end(), turn,
                               [](Sequencer::Turn before, const Work& queued) { return before < queued.turn; });
    if (turn == Sequencer::kNoTurn) {
        at = order == Order::BACK ? pool_->queue.end() : pool_->queue.begin();
    }
    pool_->queue.insert(at, Work{std::move(work), WorkTracker::Token(), turn});
    // A hand-off may pass the cap: every other thread may be holding work whose turn comes later.
    const bool handOff = order == Order::FIRST || Sequencer::IsHandOff(turn);
    if (pool_->queue.size() > pool_->idle && (pool_->threads.size() < kMaxThreads || handOff)) {
        ++pool_->idle;
        pool_->threads.emplace_back([self = weak_from_this(), pool = pool_] {
            tCurrent = self;
            tAssigned = true;
            WorkerLoop(pool);
        });
    }
}

bool VirtualProcess::PostInLane(const void* key, std::function<void()> work, Sequencer::Turn turn)
{
    const bool given = turn != Sequencer::kNoTurn && Sequencer::Adopt(turn);
    bool start = false;
    {
        std::lock_guard<std::mutex> lock(pool_->mutex);
        if (!pool_->alive || pool_->stopping) {
            if (given) {
                Sequencer::Cancel(turn);
            }
            return false;
        }
        pool_->lane.emplace_back(key, Work{std::move(work), WorkTracker::Token(), given ? turn : Sequencer::Reserve()});
        // A drain on its way or running takes it: no wake-up.
        start = pool_->laneDrains == 0;
        if (start) {
            StartDrainLocked();
        }
    }
    if (start) {
        WakeForLane(pool_);
    }
    return true;
}

thread_local int VirtualProcess::tHoldDepth_ = 0;
thread_local std::vector<std::shared_ptr<VirtualProcess::Pool>> VirtualProcess::tHeldWakes_;

void VirtualProcess::WakeForLane(const std::shared_ptr<Pool>& pool)
{
    if (tHoldDepth_ == 0) {
        pool->workReady.notify_one();
    } else if (std::find(tHeldWakes_.begin(), tHeldWakes_.end(), pool) == tHeldWakes_.end()) {
        tHeldWakes_.push_back(pool);
    }
}

VirtualProcess::HoldLaneWakes::HoldLaneWakes()
{
    ++tHoldDepth_;
}

VirtualProcess::HoldLaneWakes::~HoldLaneWakes()
{
    if (--tHoldDepth_ == 0) {
        WakeHeldLanes();
    }
}

void VirtualProcess::WakeHeldLanes()
{
    std::vector<std::shared_ptr<Pool>> held;
    held.swap(tHeldWakes_);
    for (const auto& pool : held) {
        pool->workReady.notify_one();
    }
}

void VirtualProcess::StartDrainLocked()
{
    ++pool_->laneDrains;
    // It takes no turn of its own, so it sorts first; it waits for the turns of the work it takes.
    EnqueueLocked([pool = pool_] { DrainLane(pool); }, Order::LANE, Sequencer::kNoTurn);
}

namespace {
template <typename Lane, typename Busy>
auto FirstRunnable(Lane& lane, const Busy& busy)
{
    return std::find_if(lane.begin(), lane.end(), [&busy](const auto& item) {
        return std::find(busy.begin(), busy.end(), item.first) == busy.end();
    });
}
}  // namespace

void VirtualProcess::LetLaneGoOn()
{
    if (tLane != LaneState::RUNNING) {
        return;
    }
    const std::shared_ptr<VirtualProcess> owner = tLaneOwner.lock();
    if (owner == nullptr) {
        return;
    }
    tLane = LaneState::LET_GO;
    const std::shared_ptr<Pool>& pool = owner->pool_;
    bool start = false;
    {
        std::lock_guard<std::mutex> lock(pool->mutex);
        --pool->laneDrains;
        start =
            pool->laneDrains == 0 && !pool->stopping && FirstRunnable(pool->lane, pool->laneBusy) != pool->lane.end();
        if (start) {
            owner->StartDrainLocked();
        }
    }
    if (start) {
        pool->workReady.notify_one();
    }
}

std::optional<VirtualProcess::LaneWork> VirtualProcess::NextLaneWork(Pool& pool, const void* done, bool detached)
{
    std::lock_guard<std::mutex> lock(pool.mutex);
    if (done != nullptr) {
        pool.laneBusy.erase(std::find(pool.laneBusy.begin(), pool.laneBusy.end(), done));
    }
    // A drain that let the lane go on comes back only if nobody drains it now.
    if (detached && pool.laneDrains != 0) {
        return std::nullopt;
    }
    auto runnable = FirstRunnable(pool.lane, pool.laneBusy);
    if (runnable == pool.lane.end()) {
        // What is left belongs to keys whose work runs; their drains take it next.
        pool.laneDrains -= detached ? 0 : 1;
        return std::nullopt;
    }
    pool.laneDrains += detached ? 1 : 0;
    std::optional<LaneWork> next(std::move(*runnable));
    pool.lane.erase(runnable);
    pool.laneBusy.push_back(next->first);
    return next;
}

void VirtualProcess::DrainLane(const std::shared_ptr<Pool>& pool)
{
    tLaneOwner = tCurrent;
    std::optional<LaneWork> next = NextLaneWork(*pool, nullptr, false);
    while (next) {
        tLane = LaneState::RUNNING;
        RunHolding(next->second);
        const bool detached = tLane == LaneState::LET_GO;
        tLane = LaneState::NONE;
        next = NextLaneWork(*pool, next->first, detached);
    }
}

void VirtualProcess::RunHolding(Work& work)
{
    Sequencer::Take(work.turn);
    work.run();
    work.run = nullptr;  // what the work captured is released before the work counts as done
    {
        WorkTracker::Token done = std::move(work.token);
    }
    Sequencer::Finish();
}

void VirtualProcess::WorkerLoop(const std::shared_ptr<Pool>& pool)
{
    std::unique_lock<std::mutex> lock(pool->mutex);
    for (;;) {
        pool->workReady.wait(lock, [&pool] { return pool->stopping || !pool->queue.empty(); });
        if (pool->queue.empty()) {
            return;
        }
        Work work = std::move(pool->queue.front());
        pool->queue.pop_front();
        --pool->idle;
        lock.unlock();
        RunHolding(work);
        lock.lock();
        ++pool->idle;
    }
}

std::thread VirtualProcess::StartThread(std::function<void()> body)
{
    return std::thread([self = weak_from_this(), body = std::move(body)] {
        tCurrent = self;
        tAssigned = true;
        body();
    });
}

void VirtualProcess::AddKillObserver(KillObserver observer)
{
    std::lock_guard<std::mutex> lock(ObserverMutex());
    Observers().push_back(std::move(observer));
}

ScopedProcess::ScopedProcess(std::shared_ptr<VirtualProcess> process)
    : process_(std::move(process)), previous_(tCurrent), hadPrevious_(tAssigned)
{
    tCurrent = process_;
    tAssigned = true;
}

ScopedProcess::~ScopedProcess()
{
    tCurrent = previous_;
    tAssigned = hadPrevious_;
}

}  // namespace Tarvo
