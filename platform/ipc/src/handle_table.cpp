#include "handle_table.h"

#include <algorithm>

namespace Tarvo {
namespace {
bool SameProcess(const std::weak_ptr<VirtualProcess>& a, const std::weak_ptr<VirtualProcess>& b)
{
    return !a.owner_before(b) && !b.owner_before(a);
}
}  // namespace

sptr<IPCObjectProxy> HandleTable::FindLiveProxy(const IPCObjectStub* stub,
                                                const std::shared_ptr<VirtualProcess>& holder)
{
    auto handles = byStub_.find(stub);
    if (handles == byStub_.end()) {
        return nullptr;
    }
    for (uint64_t handle : handles->second) {
        Node& node = nodes_.at(handle);
        if (SameProcess(node.holder, holder)) {
            // Fails for a proxy on its way out; its handle goes with it and a new one is made.
            if (sptr<IPCObjectProxy> proxy = node.proxy.promote()) {
                return proxy;
            }
        }
    }
    return nullptr;
}

sptr<IPCObjectProxy> HandleTable::ProxyFor(const sptr<IPCObjectStub>& stub,
                                           const std::shared_ptr<VirtualProcess>& holder)
{
    // Taken before the lock so that the last reference is not dropped under it. The liveness check
    // is made under the lock: a kill then either precedes it or marks the new node.
    std::shared_ptr<ProcessSession> owner = stub->GetOwner();
    std::lock_guard<std::shared_mutex> lock(mutex_);
    if (sptr<IPCObjectProxy> proxy = FindLiveProxy(stub.GetRefPtr(), holder)) {
        return proxy;
    }
    bool dead = owner == nullptr || !owner->IsAlive();
    uint64_t handle = nextHandle_++;
    sptr<IPCObjectProxy> proxy = IPCObjectProxy::Create(handle, stub->GetObjectDescriptor(), dead);
    nodes_.emplace(handle, Node{stub, holder, proxy, dead});
    byStub_[stub.GetRefPtr()].push_back(handle);
    return proxy;
}

sptr<IPCObjectStub> HandleTable::StubOf(uint64_t handle)
{
    std::shared_lock<std::shared_mutex> lock(mutex_);
    auto node = nodes_.find(handle);
    return node == nodes_.end() ? nullptr : node->second.stub;
}

sptr<IPCObjectStub> HandleTable::Release(uint64_t handle)
{
    std::lock_guard<std::shared_mutex> lock(mutex_);
    auto node = nodes_.find(handle);
    if (node == nodes_.end()) {
        return nullptr;
    }
    sptr<IPCObjectStub> stub = std::move(node->second.stub);
    nodes_.erase(node);
    auto handles = byStub_.find(stub.GetRefPtr());
    if (handles != byStub_.end()) {
        auto& list = handles->second;
        list.erase(std::remove(list.begin(), list.end(), handle), list.end());
        if (list.empty()) {
            byStub_.erase(handles);
        }
    }
    return stub;
}

std::vector<HandleTable::Obituary> HandleTable::MarkOwnerDead(const std::weak_ptr<ProcessSession>& owner)
{
    std::vector<Obituary> obituaries;
    std::lock_guard<std::shared_mutex> lock(mutex_);
    for (auto& [handle, node] : nodes_) {
        if (node.dead || !node.stub->IsOwnedBy(owner)) {
            continue;
        }
        node.dead = true;
        if (sptr<IPCObjectProxy> proxy = node.proxy.promote()) {
            obituaries.push_back({std::move(proxy), node.holder});
        }
    }
    return obituaries;
}

}  // namespace Tarvo
