#include "shared_time_page.h"
#include "transport_impl.h"

namespace Tarvo {

// Whatever of the receiver's own a frame names, the sender must hold.
bool SocketTransport::Impl::CheckObjectsLocked(const SocketEndpoint& endpoint, const SocketConnection& from,
                                               const WireFormat::Frame& frame)
{
    for (const WireFormat::ObjectEntry& entry : frame.objects) {
        if (entry.owner <= 0) {
            return false;
        }
        if (entry.owner == endpoint.identity.pid) {
            SocketNode* node = OwnNodeLocked(endpoint, entry.cookie);
            if (node == nullptr || !PeerHoldsLocked(*node, from.peerPid)) {
                return false;
            }
        }
    }
    return true;
}

bool SocketTransport::Impl::OnRequest(const std::shared_ptr<SocketEndpoint>& endpoint,
                                      const std::shared_ptr<SocketConnection>& from, WireFormat::Frame& frame)
{
    const bool oneWay = (frame.flags & WireFormat::FLAG_ONE_WAY) != 0;
    std::optional<WorkTracker::Token> counted;
    if (oneWay && !from->inProcess && (frame.flags & WireFormat::FLAG_COUNTED) != 0 && SharedTimePage::Attached()) {
        counted = WorkTracker::Token::Adopt();
    }
    // One-way requests go through the receiver's lane: one at a time per object, in the order read,
    // a burst handed over in one go; in virtual time each runs in the turn its sender reserved.
    std::shared_ptr<SocketNode::OneWay> queued;
    uint64_t cookie = frame.target;
    const Sequencer::Turn turn = frame.turn;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (oneWay && from->inProcess) {
            counted = TakeHandedOverLocked({from->peerPid, frame.id});
        }
        SocketNode* node = OwnNodeLocked(*endpoint, cookie);
        if (node == nullptr || !PeerHoldsLocked(*node, from->peerPid) || !CheckObjectsLocked(*endpoint, *from, frame)) {
            cookie = 0;
        } else if (oneWay) {
            queued = std::make_shared<SocketNode::OneWay>(
                SocketNode::OneWay{from, std::move(frame), counted ? std::move(counted) : WorkTracker::Token()});
            ++node->queuedOneWays;
        }
    }
    if (cookie == 0) {
        Sequencer::Cancel(turn);
        Drop(from, "request naming an object it does not hold");
        return false;
    }
    if (!oneWay) {
        auto request = std::make_shared<WireFormat::Frame>(std::move(frame));
        PostTo(
            endpoint,
            [self = shared_from_this(), endpoint, from, request] { self->HandleRequest(endpoint, from, *request); },
            turn);
    } else if (!PostToLane(endpoint, cookie, queued, turn)) {
        OneWayDone(*endpoint, cookie);
    }
    return true;
}

bool SocketTransport::Impl::OnAcquire(const std::shared_ptr<SocketEndpoint>& endpoint,
                                      const std::shared_ptr<SocketConnection>& from, const WireFormat::Frame& frame)
{
    auto onBehalf = static_cast<int32_t>(frame.code);
    bool granted = false;
    sptr<IRemoteObject> object;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        SocketNode* node = OwnNodeLocked(*endpoint, frame.target);
        object = node != nullptr ? node->weak.promote() : nullptr;
        if (object != nullptr) {
            // From the named holder, or directly: held already, in a frame on its way, or a session
            // of this same real process.
            granted = onBehalf != 0
                          ? PeerHoldsLocked(*node, onBehalf)
                          : PeerHoldsLocked(*node, from->peerPid) ||
                                PendingLocked(*endpoint, from->peerPid, object.GetRefPtr()) || from->inProcess;
        }
        if (granted && frame.flags != 0) {
            SocketNode::Refs& refs = node->holders[from.get()];
            refs.strong += (frame.flags & WireFormat::FLAG_STRONG) != 0 ? 1 : 0;
            refs.weak += (frame.flags & WireFormat::FLAG_WEAK) != 0 ? 1 : 0;
            if (refs.strong > 0 && node->strongHold == nullptr) {
                node->strongHold = object;
            }
        }
    }
    PostAnswer([self = shared_from_this(), from, id = frame.id, granted] { self->AnswerAcquire(from, id, granted); });
    return true;
}

bool SocketTransport::Impl::OnRelease(const std::shared_ptr<SocketConnection>& from, const WireFormat::Frame& frame)
{
    sptr<IRemoteObject> dropped;
    bool held = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::shared_ptr<SocketEndpoint> endpoint = from->endpoint.lock();
        SocketNode* node = endpoint != nullptr ? OwnNodeLocked(*endpoint, frame.target) : nullptr;
        auto refs = node != nullptr ? node->holders.find(from.get()) : decltype(node->holders.end()){};
        if (node != nullptr && refs != node->holders.end()) {
            refs->second.strong -= (frame.flags & WireFormat::FLAG_STRONG) != 0 ? 1 : 0;
            refs->second.weak -= (frame.flags & WireFormat::FLAG_WEAK) != 0 ? 1 : 0;
            held = refs->second.strong >= 0 && refs->second.weak >= 0;
            if (refs->second.strong <= 0 && refs->second.weak <= 0) {
                node->holders.erase(refs);
            }
            if (node->published == 0 && !StrongHeldLocked(*node)) {
                dropped = std::move(node->strongHold);
            }
        }
    }
    if (!held) {
        Drop(from, "release of a reference it does not hold");
    }
    return held;
}

bool SocketTransport::Impl::OnAnswer(const std::shared_ptr<SocketConnection>& from, WireFormat::Frame& frame)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = waiters_.find(frame.id);
    // An answer nobody waits for any more (the wait timed out) is dropped.
    if (found != waiters_.end() && found->second->connection == from.get() && !found->second->done) {
        Waiter& waiter = *found->second;
        waiter.answer = std::move(frame);
        waiter.done = true;
        waiter.status = 0;
        waiter.woken.notify_all();
    }
    return true;
}

void SocketTransport::Impl::OnFree(const std::shared_ptr<SocketConnection>& from, const WireFormat::Frame& frame)
{
    std::vector<sptr<IRemoteObject>> released;
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = from->pendingFree.find({(frame.flags & WireFormat::FLAG_OF_REPLY) != 0, frame.id});
    if (found != from->pendingFree.end()) {
        released.swap(found->second);
        from->pendingFree.erase(found);
    }
}

}  // namespace Tarvo
