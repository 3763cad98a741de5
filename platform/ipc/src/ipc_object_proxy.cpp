#include "ipc_object_proxy.h"

#include <algorithm>
#include <utility>

#include "ipc_transport.h"

namespace Tarvo {

IPCObjectProxy::IPCObjectProxy(uint64_t handle, std::u16string descriptor, bool dead)
    : IRemoteObject(std::move(descriptor)), handle_(handle), dead_(dead)
{
}

sptr<IPCObjectProxy> IPCObjectProxy::Create(uint64_t handle, std::u16string descriptor, bool dead)
{
    return sptr<IPCObjectProxy>(new IPCObjectProxy(handle, std::move(descriptor), dead));
}

IPCObjectProxy::~IPCObjectProxy()
{
    IPCTransport::Get().ReleaseHandle(handle_);
}

int IPCObjectProxy::SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    return IPCTransport::Get().Transact(handle_, code, data, reply, option);
}

bool IPCObjectProxy::IsObjectDead() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return dead_;
}

bool IPCObjectProxy::AddDeathRecipient(const sptr<DeathRecipient>& recipient)
{
    if (recipient == nullptr) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (dead_) {
        return false;
    }
    recipients_.push_back(recipient);
    return true;
}

bool IPCObjectProxy::RemoveDeathRecipient(const sptr<DeathRecipient>& recipient)
{
    // Declared first so that it is released after the lock.
    sptr<DeathRecipient> removed;
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = std::find(recipients_.begin(), recipients_.end(), recipient);
    if (recipient == nullptr || found == recipients_.end()) {
        return false;
    }
    removed = std::move(*found);
    recipients_.erase(found);
    return true;
}

std::vector<sptr<IRemoteObject::DeathRecipient>> IPCObjectProxy::MarkDead()
{
    std::lock_guard<std::mutex> lock(mutex_);
    dead_ = true;
    return std::exchange(recipients_, {});
}

}  // namespace Tarvo
