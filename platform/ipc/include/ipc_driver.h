#ifndef TARVO_IPC_IPC_DRIVER_H
#define TARVO_IPC_IPC_DRIVER_H

// Carries requests between the virtual processes of this real process.
//
// The object layer (parcels, stubs, proxies, brokers, IPCSkeleton) reaches the transport only
// through the "object layer" calls below; a driver over another transport provides the same calls.
//
// Contract:
//  - A request to an object of the calling thread's own process is a direct call on that thread.
//  - Any other request runs on a thread of the owning process (VirtualProcess::Post), with the
//    caller's identity as the calling identity and the caller's tag as the current tag. The handler
//    gets its own copy of the data; the reply is copied back.
//  - Synchronous: the caller waits for the reply, at most the option's wait time in real seconds
//    (TF_WAIT_TIME when not positive), else ERR_TIMED_OUT; see Transaction for why real seconds.
//    In virtual time the request is handed over ahead of waiting work and the reply handed
//    straight back (Sequencer), as binder lends the caller's turn to the handler.
//  - One-way: 0 once queued. One-way requests to one object are delivered one at a time, in the
//    order sent; synchronous requests do not wait behind them.
//  - When a process dies, requests to its objects fail with ERR_DEAD_OBJECT, including queued ones
//    not yet started (waiting callers are woken), and every live proxy of its objects dies
//    (IPCObjectProxy), its recipients told on a thread of the proxy's holder.
//  - While a transport fault is set for a pid, requests to that process's objects fail with
//    ERR_TRANSACTION_FAILED and are not delivered.
//  - The observer sees every request delivered to another process, on the handling thread, after
//    OnRemoteRequest returned and before the caller is woken or the work counts as finished.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "ipc_transport.h"
#include "iremote_object.h"
#include "message_option.h"
#include "message_parcel.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo {

class IPCObjectStub;
class HandleTable;
class OneWayQueue;
class Transaction;

class IPCDriver {
public:
    using TransactionRecord = ::Tarvo::TransactionRecord;
    using TransactionObserver = std::function<void(const TransactionRecord&)>;

    // Tags the requests the calling thread sends while it lives (restoring the previous tag after).
    class ScopedTag {
    public:
        explicit ScopedTag(uint64_t tag);
        ~ScopedTag();
        ScopedTag(const ScopedTag&) = delete;
        ScopedTag& operator=(const ScopedTag&) = delete;

    private:
        uint64_t previous_;
    };

    static IPCDriver& GetInstance();
    // The calling thread's current tag, 0 when none.
    static uint64_t CurrentTag();

    IPCDriver(const IPCDriver&) = delete;
    IPCDriver& operator=(const IPCDriver&) = delete;

    // Controls of the emulated device.
    void SetTransportFault(int32_t pid, bool fail);
    // Replaces the observer; an empty function removes it.
    void SetTransactionObserver(TransactionObserver observer);

    // The object layer. A flat object is what a parcel stores: the object a proxy stands for.
    int Transact(uint32_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option);
    int TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply,
                     MessageOption& option);
    // Null if the object cannot be carried.
    sptr<IRemoteObject> FlattenObject(const sptr<IRemoteObject>& object);
    // The calling thread's process's view of a flat object: itself in its owner, a proxy elsewhere.
    sptr<IRemoteObject> UnflattenObject(const sptr<IRemoteObject>& flat);
    // Called by a proxy as it goes.
    void ReleaseHandle(uint32_t handle);
    bool SetContextObject(const sptr<IRemoteObject>& object);
    sptr<IRemoteObject> GetContextObject();

private:
    IPCDriver();
    // Never destroyed: proxies may release handles during static destruction.
    ~IPCDriver();

    bool HasTransportFault(int32_t pid);
    std::shared_ptr<Transaction> MakeTransaction(const sptr<IPCObjectStub>& stub, const VirtualProcess& owner,
                                                 uint32_t code, const MessageParcel& data, const MessageOption& option);
    int SendSync(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner, MessageParcel& reply);
    int SendOneWay(const std::shared_ptr<Transaction>& txn, VirtualProcess& owner);
    void DrainOneWay(const sptr<IPCObjectStub>& target);
    void Deliver(Transaction& txn);
    void Observe(const Transaction& txn, int status);
    void OnProcessKilled(VirtualProcess& killed);
    void SendObituaries(const std::weak_ptr<VirtualProcess>& killed);

    const std::unique_ptr<HandleTable> handles_;
    const std::unique_ptr<OneWayQueue> oneWay_;

    std::mutex mutex_;
    std::set<int32_t> faultyPids_;
    std::shared_ptr<const TransactionObserver> observer_;
    sptr<IRemoteObject> contextObject_;
    // Synchronous requests whose callers wait, in sending order; woken early when the target dies.
    std::vector<std::shared_ptr<Transaction>> waiting_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_DRIVER_H
