#include "transport_controls.h"

#include <utility>

namespace Tarvo {

void TransportControls::SetFault(int32_t pid, bool fail)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (fail) {
        faultyPids_.insert(pid);
    } else {
        faultyPids_.erase(pid);
    }
    faultCount_.store(faultyPids_.size());
}

bool TransportControls::HasFault(int32_t pid) const
{
    if (faultCount_.load() == 0) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return faultyPids_.count(pid) != 0;
}

void TransportControls::SetObserver(IPCTransport::TransactionObserver observer)
{
    std::shared_ptr<const IPCTransport::TransactionObserver> replacement;
    if (observer) {
        replacement = std::make_shared<const IPCTransport::TransactionObserver>(std::move(observer));
    }
    std::lock_guard<std::mutex> lock(mutex_);
    // The old observer may be mid-call on a handling thread; that call keeps its own reference.
    observer_.swap(replacement);
    // Versions are unique in the process, so a thread's copy is never taken for another's.
    static std::atomic<uint64_t> lastVersion{0};
    observerVersion_.store(lastVersion.fetch_add(1) + 1);
}

const IPCTransport::TransactionObserver* TransportControls::Observer() const
{
    struct Seen {
        const TransportControls* controls = nullptr;
        uint64_t version = 0;
        std::shared_ptr<const IPCTransport::TransactionObserver> observer;
    };
    // A replaced observer lives on in a thread's copy until the thread next asks; it is not called.
    thread_local Seen seen;
    const uint64_t version = observerVersion_.load();
    if (seen.controls != this || seen.version != version) {
        std::lock_guard<std::mutex> lock(mutex_);
        seen = {this, observerVersion_.load(), observer_};
    }
    return seen.observer.get();
}

}  // namespace Tarvo
