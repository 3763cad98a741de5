#ifndef TARVO_UTILS_VIRTUAL_PROCESS_H
#define TARVO_UTILS_VIRTUAL_PROCESS_H

// A virtual process: one emulated process of the device, inside the one real process. It has an
// identity (what IPCSkeleton reports to the processes it calls) and its own pool of worker threads
// (its IPC threads). Every thread works for exactly one virtual process: pool threads and threads
// started with StartThread() for theirs, any other thread for the host process unless a
// ScopedProcess says otherwise.
//
// Contract:
//  - Post() runs the work on one of the process's threads, started on demand up to kMaxThreads, and
//    counts it in WorkTracker from the moment it is queued until it returns.
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
#include <string>
#include <thread>
#include <vector>

#include "work_tracker.h"

namespace Tarvo {

struct ProcessIdentity {
    int32_t pid = 0;
    int32_t uid = 0;
    uint32_t tokenId = 0;
    uint64_t fullTokenId = 0;
    std::string name;
};

class VirtualProcess : public std::enable_shared_from_this<VirtualProcess> {
public:
    static constexpr size_t kMaxThreads = 16;
    using KillObserver = std::function<void(VirtualProcess& killed)>;

    static std::shared_ptr<VirtualProcess> Create(ProcessIdentity identity);
    // The process the calling thread works for.
    static std::shared_ptr<VirtualProcess> Current();
    // The process of threads nobody assigned: the real process itself, a native process.
    static std::shared_ptr<VirtualProcess> Host();

    VirtualProcess(const VirtualProcess&) = delete;
    VirtualProcess& operator=(const VirtualProcess&) = delete;
    ~VirtualProcess();

    const ProcessIdentity& Identity() const { return identity_; }
    int32_t Pid() const { return identity_.pid; }
    const std::string& Name() const { return identity_.name; }
    bool IsAlive() const;

    void Kill();
    bool Post(std::function<void()> work);
    // A thread that works for this process (event runners, delivery threads).
    std::thread StartThread(std::function<void()> body);

    // Observers live for the rest of the real process; they are called for every Kill().
    static void AddKillObserver(KillObserver observer);

private:
    explicit VirtualProcess(ProcessIdentity identity);
    struct Work {
        std::function<void()> run;
        WorkTracker::Token token;
    };
    void WorkerLoop();

    const ProcessIdentity identity_;
    mutable std::mutex mutex_;
    std::condition_variable workReady_;
    std::deque<Work> queue_;
    std::vector<std::thread> threads_;
    size_t idle_ = 0;
    bool alive_ = true;
    bool stopping_ = false;
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
