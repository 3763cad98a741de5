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
}

bool TransportControls::HasFault(int32_t pid) const
{
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
}

std::shared_ptr<const IPCTransport::TransactionObserver> TransportControls::Observer() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return observer_;
}

}  // namespace Tarvo
