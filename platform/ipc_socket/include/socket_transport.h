#ifndef TARVO_IPC_SOCKET_SOCKET_TRANSPORT_H
#define TARVO_IPC_SOCKET_SOCKET_TRANSPORT_H

// The transport between real processes: binder's semantics over AF_UNIX stream sockets
// (docs/wire-format.md). Each session (VirtualProcess) that owns an object others use, or sends a
// request, gets an endpoint: a socket listening at RUNDIR/sock/<emulated pid> and its connections.
// Several sessions of one real process are separate endpoints, so tests can host a whole device in
// one process. The peer's identity comes from the kernel (SO_PEERCRED) and ProcessRegistry
// (RUNDIR/registry), never from what the peer claims. One I/O thread reads every connection.
// Well-known objects are published under a name and found at RUNDIR/<name>; the context object
// (the service manager) is the one named "samgr".

#include <memory>
#include <string>

#include "ipc_transport.h"

namespace Tarvo {

class SocketTransport : public IPCTransport {
public:
    struct Options {
        // Holds sock/ (the endpoints), registry/ and the context object's socket "samgr".
        std::string runDir;
    };

    static constexpr const char* kContextName = "samgr";
    // Names are 1 to 32 of [a-z0-9_], and not a folder of the run folder.
    static constexpr size_t kMaxNameLength = 32;

    explicit SocketTransport(Options options);
    // Closes every endpoint; peers see this process die.
    ~SocketTransport() override;
    SocketTransport(const SocketTransport&) = delete;
    SocketTransport& operator=(const SocketTransport&) = delete;

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

    // Publishes an object of a session of this process under `name` (null withdraws it). False for
    // a bad name, an object that cannot be bound here, or a name a live process of another real
    // process holds.
    bool PublishNamed(const std::string& name, const sptr<IRemoteObject>& object);
    // The object published under `name`, as the calling thread's session sees it; null if none.
    sptr<IRemoteObject> GetNamed(const std::string& name);
    // A device in virtual time tells each process of a death (PeerDied) in an order it fixes; from
    // then on a connection to another real process that ends only stops being read until then (one
    // made to a well-known name still closes at once).
    void SetDeathsWhenTold(bool told);
    // The process acting as emulated `pid` has died: its proxies die and their recipients are
    // posted, from the calling thread.
    void PeerDied(int32_t pid);
    static bool ValidName(const std::string& name);

    class Impl;

private:
    std::shared_ptr<Impl> impl_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_SOCKET_SOCKET_TRANSPORT_H
