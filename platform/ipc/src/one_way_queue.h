#ifndef TARVO_IPC_ONE_WAY_QUEUE_H
#define TARVO_IPC_ONE_WAY_QUEUE_H

// Per-object FIFOs of one-way requests. At most one drain runs per object: the sender that finds
// an object's queue idle starts one, and the drain takes requests one at a time until the queue
// is empty. Thread-safe.

#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "transaction.h"

namespace Tarvo {

class OneWayQueue {
public:
    // Appends; true if the object had no drain, which the caller must then start.
    bool Push(std::shared_ptr<Transaction> txn);
    // The next request for the object's drain; null (and the drain over) when none is left.
    std::shared_ptr<Transaction> Next(const IPCObjectStub* target);
    // Ends the object's drain early, giving back what it had not taken.
    std::deque<std::shared_ptr<Transaction>> Abandon(const IPCObjectStub* target);

private:
    std::mutex mutex_;
    // An object is here exactly while its drain runs; its queued requests keep it alive.
    std::unordered_map<const IPCObjectStub*, std::deque<std::shared_ptr<Transaction>>> queues_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_ONE_WAY_QUEUE_H
