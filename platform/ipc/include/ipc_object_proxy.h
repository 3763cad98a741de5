#ifndef TARVO_IPC_IPC_OBJECT_PROXY_H
#define TARVO_IPC_IPC_OBJECT_PROXY_H

// Stands, in one process (its holder), for an object owned by another process. Proxies are made
// only by the transport, which names the object by a handle; there is at most one live proxy per
// object and holder.
//
// Contract:
//  - SendRequest() goes through the transport (see IRemoteObject for the results).
//  - Once the owner dies the proxy is dead for good: IsObjectDead() is true, AddDeathRecipient()
//    fails, and the recipients registered until then are told once (IRemoteObject) and dropped.
//    A proxy made for an object of a process that is already dead starts dead.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "iremote_object.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo {

class IPCObjectProxy : public IRemoteObject {
public:
    ~IPCObjectProxy() override;

    int SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
    bool IsProxyObject() const override { return true; }
    bool IsObjectDead() const override;
    bool AddDeathRecipient(const sptr<DeathRecipient>& recipient) override;
    bool RemoveDeathRecipient(const sptr<DeathRecipient>& recipient) override;

    // For transports: a proxy for `handle`, which it releases as it goes.
    static sptr<IPCObjectProxy> Create(uint64_t handle, std::u16string descriptor, bool dead);

    uint64_t GetHandle() const { return handle_; }

    // For the transport: marks the proxy dead and hands over the recipients to tell; empty after the
    // first call.
    std::vector<sptr<DeathRecipient>> MarkDead();

private:
    IPCObjectProxy(uint64_t handle, std::u16string descriptor, bool dead);

    const uint64_t handle_;
    mutable std::mutex mutex_;
    bool dead_;
    std::vector<sptr<DeathRecipient>> recipients_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_OBJECT_PROXY_H
