#include "virtual_process.h"

#include <unistd.h>

namespace Tarvo {
namespace {
thread_local std::weak_ptr<VirtualProcess> tCurrent;
thread_local bool tAssigned = false;

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

// Native token: type 1 in bits 28-29 of the token id.
constexpr uint32_t kHostTokenId = 1u << 28;
}  // namespace

VirtualProcess::VirtualProcess(ProcessIdentity identity) : identity_(std::move(identity)) {}

std::shared_ptr<VirtualProcess> VirtualProcess::Create(ProcessIdentity identity)
{
    return std::shared_ptr<VirtualProcess>(new VirtualProcess(std::move(identity)));
}

std::shared_ptr<VirtualProcess> VirtualProcess::Host()
{
    // Never destroyed: its threads may be in use until the very end of the real process.
    static auto* host = new std::shared_ptr<VirtualProcess>(Create(
        {static_cast<int32_t>(getpid()), static_cast<int32_t>(getuid()), kHostTokenId, kHostTokenId, "host"}));
    return *host;
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
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
        threads.swap(threads_);
    }
    workReady_.notify_all();
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
    std::lock_guard<std::mutex> lock(mutex_);
    return alive_;
}

void VirtualProcess::Kill()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!alive_) {
            return;
        }
        alive_ = false;
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
    std::lock_guard<std::mutex> lock(mutex_);
    if (!alive_ || stopping_) {
        return false;
    }
    queue_.push_back(Work{std::move(work), WorkTracker::Token()});
    if (idle_ == 0 && threads_.size() < kMaxThreads) {
        ++idle_;
        threads_.emplace_back([self = weak_from_this(), this] {
            tCurrent = self;
            tAssigned = true;
            WorkerLoop();
        });
    }
    workReady_.notify_one();
    return true;
}

void VirtualProcess::WorkerLoop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        workReady_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (queue_.empty()) {
            return;
        }
        Work work = std::move(queue_.front());
        queue_.pop_front();
        --idle_;
        lock.unlock();
        work.run();
        work.run = nullptr;
        {
            WorkTracker::Token done = std::move(work.token);
        }
        lock.lock();
        ++idle_;
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
