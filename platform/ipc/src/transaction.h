#ifndef TARVO_IPC_TRANSACTION_H
#define TARVO_IPC_TRANSACTION_H

// One request on its way through the driver, shared by the sender and the handling thread.
// The outcome is set once, by whoever comes first: the handler, or the driver when the target dies.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "virtual_process.h"
#include "work_tracker.h"

namespace Tarvo {

class Transaction {
public:
    Transaction(sptr<IPCObjectStub> target, int32_t targetPid, uint32_t code, const MessageParcel& data,
                const MessageOption& option);

    // False if the outcome was already set. `replied`: the handler ran and `reply` is final.
    bool Complete(int status, bool replied);
    // The outcome, or ERR_TIMED_OUT if none came in time. `replied` as given to Complete().
    int Wait(std::chrono::seconds timeout, bool& replied);

    const sptr<IPCObjectStub> target;
    const int32_t targetPid;
    const uint32_t code;
    const bool oneWay;
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    ProcessIdentity caller;
    uint64_t tag = 0;
    // One-way requests wait in the driver's queue, not the process's: count them until delivered.
    std::optional<WorkTracker::Token> pending;

private:
    std::mutex mutex_;
    std::condition_variable done_;
    bool completed_ = false;
    bool replied_ = false;
    int status_ = 0;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_TRANSACTION_H
