#ifndef TARVO_IPC_HANDLE_TABLE_H
#define TARVO_IPC_HANDLE_TABLE_H

// The driver's references from proxies to stubs. Each handle names one stub for one holder
// process and keeps the stub alive while its proxy lives; the proxy itself is cached weakly, so
// that a holder gets the same proxy for a stub as long as it keeps one.
//
// Thread-safe; requests look handles up side by side. Nothing is called out of the table with its lock held: references
// that may be the last are handed back to the caller to drop.

#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

#include "ipc_object_proxy.h"
#include "ipc_object_stub.h"
#include "virtual_process.h"

namespace Tarvo {

class HandleTable {
public:
    struct Obituary {
        sptr<IPCObjectProxy> proxy;
        std::weak_ptr<VirtualProcess> holder;
    };

    // The holder's proxy for the stub: its live one, else a new one (dead from the start if the
    // stub's owner is gone or dead).
    sptr<IPCObjectProxy> ProxyFor(const sptr<IPCObjectStub>& stub, const std::shared_ptr<VirtualProcess>& holder);
    // The stub a handle names; null for an unknown handle.
    sptr<IPCObjectStub> StubOf(uint64_t handle);
    // Forgets a handle; gives back its stub reference.
    sptr<IPCObjectStub> Release(uint64_t handle);
    // Marks the handles of the dead process's objects dead; gives back their live proxies.
    std::vector<Obituary> MarkOwnerDead(const std::weak_ptr<ProcessSession>& owner);

private:
    struct Node {
        sptr<IPCObjectStub> stub;
        std::weak_ptr<VirtualProcess> holder;
        wptr<IPCObjectProxy> proxy;
        bool dead = false;
    };

    sptr<IPCObjectProxy> FindLiveProxy(const IPCObjectStub* stub, const std::shared_ptr<VirtualProcess>& holder);

    // Shared by the lookups of every request, taken alone to change the table.
    std::shared_mutex mutex_;
    uint64_t nextHandle_ = 1;
    std::unordered_map<uint64_t, Node> nodes_;
    // The handles of each stub, to find a holder's proxy; a stub here is kept alive by its nodes.
    std::unordered_map<const IPCObjectStub*, std::vector<uint64_t>> byStub_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_HANDLE_TABLE_H
