#ifndef TARVO_IPC_IPC_TRANSPORT_H
#define TARVO_IPC_IPC_TRANSPORT_H

// What carries requests between processes. The object layer (parcels, stubs, proxies, brokers,
// IPCSkeleton) reaches a transport only through this interface, so nothing above it knows which
// one runs: the in-process transport (every emulated process a VirtualProcess of one real
// process) or the socket transport (real processes over AF_UNIX sockets).
//
// Contract, for every transport:
//  - One transport per real process, installed before the first object, parcel or request; it
//    lives until the process ends. Without Install() the in-process transport is used.
//  - A process is a ProcessSession: the stubs a thread creates belong to that thread's session.
//    A request to an object of the calling thread's own session is a direct call on that thread.
//  - Any other request runs on a thread of the owner's session, with CallingContext telling the
//    handler who called (an identity the transport established, never one the caller claimed)
//    and the caller's tag. Synchronous: the caller waits for the reply, at most the option's wait
//    time (TF_WAIT_TIME when not positive), else ERR_TIMED_OUT. One-way: 0 once handed over;
//    one-way requests to one object are delivered one at a time in the order sent, and
//    synchronous requests do not wait behind them. A handler may call back into its caller.
//  - Parcels hold WireObjects, never pointers; the transport translates them as they cross.
//  - A proxy holds a reference on its handle while it lives; the object lives while some process
//    holds a reference. When the owner dies, requests fail with ERR_DEAD_OBJECT (waiting callers
//    are woken), every proxy of its objects dies (IPCObjectProxy::MarkDead) and the recipients
//    are told on a thread of the proxy's holder.
//  - While a fault is set for a pid, requests to that process's objects fail with
//    ERR_TRANSACTION_FAILED and are not delivered.
//  - The observer sees every request delivered from another process, on the handling thread,
//    after OnRemoteRequest returned and before the sender is answered.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "iremote_object.h"
#include "message_option.h"
#include "message_parcel.h"
#include "process_session.h"
#include "refbase.h"

namespace Tarvo {

class IPCObjectStub;

struct TransactionRecord {
    std::u16string descriptor;
    uint32_t code = 0;
    int status = 0;
    bool oneWay = false;
    int32_t callerPid = 0;
    int32_t targetPid = 0;
    uint64_t tag = 0;
    // Valid during the observer call only.
    const MessageParcel* reply = nullptr;
};

class IPCTransport {
public:
    using TransactionObserver = std::function<void(const TransactionRecord&)>;

    // Tags the requests the calling thread sends while it lives (restoring the previous tag after).
    // Tags travel with requests, and requests sent while handling one carry its tag.
    class ScopedTag {
    public:
        explicit ScopedTag(uint64_t tag);
        ~ScopedTag();
        ScopedTag(const ScopedTag&) = delete;
        ScopedTag& operator=(const ScopedTag&) = delete;

    private:
        uint64_t previous_;
    };

    // The transport of this process.
    static IPCTransport& Get();
    // Makes `transport` the transport of this process; it is never destroyed. False (and nothing
    // changes) once Get() has been called.
    static bool Install(IPCTransport* transport);
    // The calling thread's current tag, 0 when none.
    static uint64_t CurrentTag();

    virtual ~IPCTransport() = default;

    // The process the calling thread works for. Never null.
    virtual std::shared_ptr<ProcessSession> CurrentSession() = 0;

    // A request through a proxy's handle.
    virtual int Transact(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                         MessageOption& option) = 0;
    // A request to a stub from a thread of another session (only where sessions share a process).
    virtual int TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply,
                             MessageOption& option) = 0;

    // What a parcel stores for an object of the calling thread's session (its cookie) or a proxy
    // it holds (its handle). False if the object cannot be carried.
    virtual bool FlattenObject(const sptr<IRemoteObject>& object, WireObject& wire) = 0;
    // The calling thread's session's view of an object read from a parcel: the object itself in
    // its owner, a proxy elsewhere. Null if the wire value names nothing this session may use.
    virtual sptr<IRemoteObject> UnflattenObject(const WireObject& wire) = 0;
    // Called by a proxy as it goes: its reference on the handle is released.
    virtual void ReleaseHandle(uint64_t handle) = 0;

    // The service manager's object, as the calling thread's session sees it; null if unset or dead.
    virtual sptr<IRemoteObject> GetContextObject() = 0;
    // Null unsets it. False if the object cannot be carried, or this process may not set it.
    virtual bool SetContextObject(const sptr<IRemoteObject>& object) = 0;

    // Controls of the emulated device.
    virtual void SetTransportFault(int32_t pid, bool fail) = 0;
    // Replaces the observer; an empty function removes it.
    virtual void SetTransactionObserver(TransactionObserver observer) = 0;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_TRANSPORT_H
