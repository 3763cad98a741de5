#include "ipc_types.h"
#include "message_option.h"
#include "transport_impl.h"

namespace Tarvo {

bool SocketTransport::Impl::StrongHeldLocked(const SocketNode& node) const
{
    for (const auto& [connection, refs] : node.holders) {
        if (refs.strong > 0) {
            return true;
        }
    }
    return false;
}

bool SocketTransport::Impl::PeerHoldsLocked(const SocketNode& node, int32_t peerPid) const
{
    for (const auto& [connection, refs] : node.holders) {
        if (connection->peerPid == peerPid && (refs.strong > 0 || refs.weak > 0)) {
            return true;
        }
    }
    return false;
}

bool SocketTransport::Impl::PendingLocked(const SocketEndpoint& endpoint, int32_t peerPid,
                                          const IRemoteObject* object) const
{
    for (const auto& connection : endpoint.connections) {
        if (connection->peerPid != peerPid) {
            continue;
        }
        for (const auto& [key, holds] : connection->pendingFree) {
            for (const auto& hold : holds) {
                if (hold.GetRefPtr() == object) {
                    return true;
                }
            }
        }
    }
    return false;
}

SocketNode* SocketTransport::Impl::OwnNodeLocked(const SocketEndpoint& endpoint, uint64_t cookie)
{
    auto found = nodes_.find(cookie);
    if (found == nodes_.end() || found->second.owner.lock().get() != &endpoint) {
        return nullptr;
    }
    return &found->second;
}

// Nodes whose object is gone and whom nobody holds are forgotten now and then.
void SocketTransport::Impl::SweepLocked()
{
    std::erase_if(nodes_, [this](const auto& item) {
        const SocketNode& node = item.second;
        bool gone =
            node.holders.empty() && node.published == 0 && node.queuedOneWays == 0 && node.counter->GetStrong() <= 0;
        if (gone) {
            cookies_.erase(node.object);
        }
        return gone;
    });
    sweepAt_ = std::max<size_t>(64, nodes_.size() * 2);
}

uint64_t SocketTransport::Impl::CookieFor(const sptr<IRemoteObject>& object,
                                          const std::shared_ptr<SocketEndpoint>& owner, int32_t ownerPid)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto known = cookies_.find(object.GetRefPtr());
    // The caller's reference keeps a live object's node from being swept; a node found for a dead
    // object at the same address is replaced.
    if (known != cookies_.end()) {
        SocketNode& node = nodes_.at(known->second);
        if (node.counter->GetStrong() > 0 && node.ownerPid == ownerPid) {
            return known->second;
        }
        node.object = nullptr;
        cookies_.erase(known);
    }
    if (nodes_.size() >= sweepAt_) {
        SweepLocked();
    }
    uint64_t cookie = nextCookie_++;
    SocketNode& node = nodes_[cookie];
    node.owner = owner;
    node.ownerPid = ownerPid;
    node.object = object.GetRefPtr();
    node.counter = object->GetRefCounter();
    node.weak = object;
    node.descriptor = object->GetObjectDescriptor();
    cookies_[node.object] = cookie;
    return cookie;
}

sptr<IRemoteObject> SocketTransport::Impl::NewHandle(const std::shared_ptr<SocketEndpoint>& holder,
                                                     const std::shared_ptr<SocketConnection>& connection,
                                                     const WireFormat::ObjectEntry& entry, bool* extra)
{
    sptr<IRemoteObject> existing;
    std::lock_guard<std::mutex> lock(mutex_);
    auto key = std::make_tuple(holder.get(), entry.owner, entry.cookie);
    auto indexed = handleIndex_.find(key);
    if (indexed != handleIndex_.end()) {
        existing = handles_.at(indexed->second).proxy.promote();
        if (existing != nullptr) {
            // Raced with another thread: its proxy stands, our reference is one too many.
            *extra = true;
            return existing;
        }
    }
    uint64_t handle = nextHandle_++;
    bool dead = connection == nullptr || connection->closed.load();
    sptr<IPCObjectProxy> proxy = IPCObjectProxy::Create(handle, entry.descriptor, dead);
    handles_[handle] = SocketHandle{
        holder, holder.get(), dead ? nullptr : connection, entry.owner, entry.cookie, entry.descriptor, proxy, dead};
    handleIndex_[key] = handle;
    return proxy;
}

sptr<IRemoteObject> SocketTransport::Impl::ExistingProxy(const std::shared_ptr<SocketEndpoint>& holder,
                                                         const WireFormat::ObjectEntry& entry)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto indexed = handleIndex_.find(std::make_tuple(holder.get(), entry.owner, entry.cookie));
    if (indexed == handleIndex_.end()) {
        return nullptr;
    }
    // A proxy on its way out fails to promote; its handle goes and a new one is made.
    return handles_.at(indexed->second).proxy.promote();
}

// The holder's proxy for an object of another endpoint. A new handle takes a strong and a weak
// reference at the owner first, synchronously, so that the owner knows of it before the holder
// passes the object on. `onBehalf`, when not 0, names the process the object came from, which
// the owner checks holds it; a refusal sets `refused`.
sptr<IRemoteObject> SocketTransport::Impl::ProxyFor(const std::shared_ptr<SocketEndpoint>& holder,
                                                    const WireFormat::ObjectEntry& entry, int32_t onBehalf,
                                                    bool* refused)
{
    sptr<IRemoteObject> existing = ExistingProxy(holder, entry);
    if (existing != nullptr && onBehalf == 0) {
        return existing;
    }
    std::shared_ptr<SocketConnection> connection = ConnectionTo(holder, entry.owner);
    if (connection == nullptr) {
        bool extra = false;
        return existing != nullptr ? existing : NewHandle(holder, nullptr, entry, &extra);
    }
    WireFormat::Frame acquire;
    acquire.type = WireFormat::ACQUIRE;
    acquire.flags = existing != nullptr ? 0 : (WireFormat::FLAG_STRONG | WireFormat::FLAG_WEAK);
    acquire.code = static_cast<uint32_t>(onBehalf);
    acquire.target = entry.cookie;
    WireFormat::Frame answer;
    int status = Call(connection, acquire, MessageOption::TF_WAIT_TIME, &answer);
    if (status == ERR_NONE && answer.code != 0) {
        *refused = true;
        return nullptr;
    }
    if (existing != nullptr) {
        return existing;
    }
    bool extra = false;
    sptr<IRemoteObject> proxy = NewHandle(holder, status == ERR_NONE ? connection : nullptr, entry, &extra);
    if (extra && status == ERR_NONE) {
        SendRelease(connection, entry.cookie);
    }
    return proxy;
}

void SocketTransport::Impl::SendRelease(const std::shared_ptr<SocketConnection>& connection, uint64_t cookie)
{
    WireFormat::Frame release;
    release.type = WireFormat::RELEASE;
    release.flags = WireFormat::FLAG_STRONG | WireFormat::FLAG_WEAK;
    release.target = cookie;
    Send(connection, release);
}

void SocketTransport::Impl::ReleaseRefs(uint64_t handle)
{
    std::shared_ptr<SocketConnection> connection;
    uint64_t cookie = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = handles_.find(handle);
        if (found == handles_.end()) {
            return;
        }
        SocketHandle& entry = found->second;
        auto indexed = handleIndex_.find(std::make_tuple(entry.holderKey, entry.owner, entry.cookie));
        if (indexed != handleIndex_.end() && indexed->second == handle) {
            handleIndex_.erase(indexed);
        }
        if (!entry.dead) {
            connection = std::move(entry.connection);
            cookie = entry.cookie;
        }
        handles_.erase(found);
    }
    if (connection != nullptr && !connection->closed) {
        SendRelease(connection, cookie);
    }
}

}  // namespace Tarvo
