#ifndef TARVO_IPC_TRANSACTION_H
#define TARVO_IPC_TRANSACTION_H

// One request on its way through the driver, shared by the sender and the handling thread.
// The outcome is set once, by whoever comes first: the handler, or the driver when the target dies.
// A sender that held the sequencer's baton gets its turn back first in line when the outcome is set,
// so the reply is handed straight back to it.
//
// The wait is counted in real seconds, not on the platform clock: in virtual time the clock moves
// only while the device is quiet, and a request awaiting its reply keeps it busy, so a virtual
// deadline could never pass. A request that never ends there is a hang, which the driver of the
// clock reports; the real-time limit only keeps a broken handler from blocking its sender forever.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "sequencer.h"
#include "virtual_process.h"

namespace Tarvo {

class Transaction {
public:
    Transaction(sptr<IPCObjectStub> target, int32_t targetPid, uint32_t code, const MessageParcel& data,
                const MessageOption& option);

    // False if the outcome was already set. `replied`: the handler ran and `reply` is final.
    bool Complete(int status, bool replied);
    // The outcome, or ERR_TIMED_OUT if none came in time. `replied` as given to Complete().
    // A sequenced sender gives its baton up for the wait and holds it again on return.
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

private:
    std::mutex mutex_;
    std::condition_variable done_;
    bool completed_ = false;
    bool replied_ = false;
    int status_ = 0;
    const bool senderSequenced_;
    Sequencer::Turn resume_ = Sequencer::kNoTurn;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_TRANSACTION_H
