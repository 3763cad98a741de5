#ifndef TARVO_IPC_IN_PROCESS_TRANSPORT_H
#define TARVO_IPC_IN_PROCESS_TRANSPORT_H

// Carries requests between the virtual processes of this real process (IPCTransport's contract).
//
// Every session is a VirtualProcess. A request to another process runs on a thread of its pool
// (VirtualProcess::Post); the handler gets its own copy of the data and the reply is copied back.
// In virtual time a synchronous request is handed over ahead of waiting work and the reply handed
// straight back (Sequencer), as binder lends the caller's turn to the handler; the wait is in real
// seconds (see Transaction for why). All sessions share one address space, so wire values are
// global: a cookie names an object wherever it is read, a handle names a stub for one holder.

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>
#include <vector>

#include "ipc_transport.h"
#include "transport_controls.h"
#include "virtual_process.h"

namespace Tarvo {

class HandleTable;
class Transaction;

class InProcessTransport : public IPCTransport {
public:
    InProcessTransport();
    // Never destroyed: proxies may release handles during static destruction.
    ~InProcessTransport() override;

    std::shared_ptr<ProcessSession> CurrentSession() override;
    int Transact(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                 MessageOption& option) override;
    int TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply,
                     MessageOption& option) override;
    bool FlattenObject(const sptr<IRemoteObject>& object, WireObject& wire) override;
    sptr<IRemoteObject> UnflattenObject(const WireObject& wire) override;
    void ReleaseHandle(uint64_t handle) override;
    sptr<IRemoteObject> GetContextObject() override;
    bool SetContextObject(const sptr<IRemoteObject>& object) override;
    void SetTransportFault(int32_t pid, bool fail) override;
    void SetTransactionObserver(TransactionObserver observer) override;

private:
    std::shared_ptr<Transaction> MakeTransaction(const sptr<IPCObjectStub>& stub, const VirtualProcess& owner,
                                                 uint32_t code, const MessageParcel& data, const MessageOption& option);
    int SendSync(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner, MessageParcel& reply);
    int SendOneWay(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner);
    void Deliver(Transaction& txn);
    void Observe(const Transaction& txn, int status);
    // The object a wire value names, whoever holds it; null if none.
    sptr<IRemoteObject> Resolve(const WireObject& wire);
    uint64_t Remember(const sptr<IRemoteObject>& object);
    void OnProcessKilled(VirtualProcess& killed);
    void SendObituaries(const std::weak_ptr<ProcessSession>& killed);

    const std::unique_ptr<HandleTable> handles_;

    // Synchronous requests whose callers wait, by target process, so that its death wakes them
    // early; spread over shards so that requests to different processes share no lock.
    struct Waiting {
        std::mutex mutex;
        std::vector<std::shared_ptr<Transaction>> transactions;
    };
    static constexpr size_t kWaitingShards = 64;
    Waiting& WaitingFor(int32_t pid) { return waiting_[static_cast<uint32_t>(pid) % kWaitingShards]; }

    std::array<Waiting, kWaitingShards> waiting_;
    std::mutex mutex_;
    TransportControls controls_;
    sptr<IRemoteObject> contextObject_;
    // Objects written into parcels, by cookie; an entry whose object is gone is swept later.
    std::unordered_map<uint64_t, wptr<IRemoteObject>> cookies_;
    size_t sweepAt_ = 64;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IN_PROCESS_TRANSPORT_H
