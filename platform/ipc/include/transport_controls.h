#ifndef TARVO_IPC_TRANSPORT_CONTROLS_H
#define TARVO_IPC_TRANSPORT_CONTROLS_H

// What every transport keeps for the device's controls (IPCTransport::SetTransportFault and
// SetTransactionObserver): the pids whose objects fail in transport, and the observer, which is
// called without any lock held (a call still running when it is replaced keeps its own copy).
// Thread-safe; requests read both without taking a lock unless they changed.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>

#include "ipc_transport.h"

namespace Tarvo {

class TransportControls {
public:
    void SetFault(int32_t pid, bool fail);
    bool HasFault(int32_t pid) const;
    void SetObserver(IPCTransport::TransactionObserver observer);
    // Tells the observer, if there is one. `build` fills the record only then.
    template <typename Build>
    void Observe(Build&& build) const
    {
        const IPCTransport::TransactionObserver* observer = Observer();
        if (observer != nullptr) {
            TransactionRecord record;
            build(record);
            (*observer)(record);
        }
    }

private:
    // Valid until this thread asks again: the thread keeps its own reference.
    const IPCTransport::TransactionObserver* Observer() const;

    mutable std::mutex mutex_;
    std::set<int32_t> faultyPids_;
    std::shared_ptr<const IPCTransport::TransactionObserver> observer_;
    // Read on every request without the lock: whether any pid fails, and which observer is set.
    std::atomic<size_t> faultCount_{0};
    std::atomic<uint64_t> observerVersion_{0};
};

}  // namespace Tarvo

#endif  // TARVO_IPC_TRANSPORT_CONTROLS_H
