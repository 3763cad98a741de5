#include <algorithm>

#include "hilog.h"
#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {

// The reader's view of a wire value: its own object, or its proxy for someone else's (sessions of
// this real process may read what another wrote).
sptr<IRemoteObject> SocketTransport::Impl::Resolve(const std::shared_ptr<SocketEndpoint>& reader,
                                                   const WireObject& wire)
{
    WireFormat::ObjectEntry entry;
    int32_t onBehalf = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (wire.kind == WireObject::LOCAL) {
            auto node = nodes_.find(wire.value);
            if (node == nodes_.end()) {
                return nullptr;
            }
            if (node->second.owner.lock() == reader) {
                return node->second.weak.promote();
            }
            entry = {node->second.ownerPid, wire.value, node->second.descriptor};
        } else if (wire.kind == WireObject::HANDLE) {
            auto handle = handles_.find(wire.value);
            if (handle == handles_.end()) {
                return nullptr;
            }
            const SocketHandle& known = handle->second;
            if (known.holderKey == reader.get()) {
                return known.proxy.promote();
            }
            entry = {known.owner, known.cookie, known.descriptor};
            std::shared_ptr<SocketEndpoint> holder = known.holder.lock();
            onBehalf = holder != nullptr ? holder->identity.pid : 0;
        } else {
            return nullptr;
        }
        if (entry.owner == reader->identity.pid) {
            SocketNode* own = OwnNodeLocked(*reader, entry.cookie);
            return own != nullptr ? own->weak.promote() : nullptr;
        }
    }
    bool refused = false;
    return ProxyFor(reader, entry, onBehalf, &refused);
}

// What a frame from `sender` says about one object of its parcel. The sender must hold what it
// names: another local session's object or handle first becomes a proxy of the sender's own,
// kept with the frame.
bool SocketTransport::Impl::EntryOf(const std::shared_ptr<SocketEndpoint>& sender,
                                    const MessageParcel::ObjectEntry& object, WireFormat::ObjectEntry& entry,
                                    std::vector<sptr<IRemoteObject>>& holds)
{
    int32_t onBehalf = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (object.wire.kind == WireObject::LOCAL && nodes_.count(object.wire.value) != 0) {
            const SocketNode& node = nodes_.at(object.wire.value);
            entry = {node.ownerPid, object.wire.value, node.descriptor};
            if (node.owner.lock() == sender) {
                return true;
            }
        } else if (object.wire.kind == WireObject::HANDLE && handles_.count(object.wire.value) != 0) {
            const SocketHandle& handle = handles_.at(object.wire.value);
            entry = {handle.owner, handle.cookie, handle.descriptor};
            if (handle.holderKey == sender.get() || handle.owner == sender->identity.pid) {
                return !handle.dead || handle.owner == sender->identity.pid;
            }
            std::shared_ptr<SocketEndpoint> holder = handle.holder.lock();
            onBehalf = holder != nullptr ? holder->identity.pid : 0;
        } else {
            return false;
        }
    }
    if (entry.owner == sender->identity.pid) {
        return true;
    }
    bool refused = false;
    sptr<IRemoteObject> proxy = ProxyFor(sender, entry, onBehalf, &refused);
    if (proxy == nullptr || proxy->IsObjectDead()) {
        return false;
    }
    holds.push_back(std::move(proxy));
    return true;
}

bool SocketTransport::Impl::ToEntries(const std::shared_ptr<SocketEndpoint>& sender, const MessageParcel& parcel,
                                      std::vector<WireFormat::ObjectEntry>& entries,
                                      std::vector<sptr<IRemoteObject>>& holds)
{
    for (const MessageParcel::ObjectEntry& object : parcel.GetObjects()) {
        WireFormat::ObjectEntry entry;
        if (!EntryOf(sender, object, entry, holds)) {
            return false;
        }
        entries.push_back(std::move(entry));
        holds.push_back(object.hold);
    }
    return true;
}

// Takes this endpoint's own references on what a frame carries, then lets the sender drop the
// ones it kept for the frame. False (the sender dropped) if it named an object it does not hold.
bool SocketTransport::Impl::Receive(const std::shared_ptr<SocketEndpoint>& endpoint,
                                    const std::shared_ptr<SocketConnection>& from, WireFormat::Frame& frame,
                                    bool isReply, MessageParcel& parcel)
{
    std::vector<MessageParcel::ObjectEntry> objects;
    for (const WireFormat::ObjectEntry& entry : frame.objects) {
        sptr<IRemoteObject> hold;
        if (entry.owner == endpoint->identity.pid) {
            std::lock_guard<std::mutex> lock(mutex_);
            SocketNode* node = OwnNodeLocked(*endpoint, entry.cookie);
            hold = node != nullptr ? node->weak.promote() : nullptr;
            objects.push_back({WireObject{WireObject::LOCAL, entry.cookie}, hold});
            continue;
        }
        bool refused = false;
        hold = ProxyFor(endpoint, entry, entry.owner == from->peerPid ? 0 : from->peerPid, &refused);
        if (refused) {
            Drop(from, "reference to an object it does not hold");
            return false;
        }
        uint64_t handle = static_cast<IPCObjectProxy*>(hold.GetRefPtr())->GetHandle();
        objects.push_back({WireObject{WireObject::HANDLE, handle}, hold});
    }
    if (!frame.objects.empty()) {
        WireFormat::Frame freed;
        freed.type = WireFormat::FREE;
        freed.flags = isReply ? WireFormat::FLAG_OF_REPLY : 0;
        freed.id = frame.id;
        Send(from, freed);
    }
    parcel.ParseFrom(frame.data.data(), frame.data.size());
    parcel.SetObjects(std::move(objects));
    return true;
}

}  // namespace Tarvo
