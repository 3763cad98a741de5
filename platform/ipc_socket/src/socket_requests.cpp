#include <chrono>

#include "calling_context.h"
#include "hilog.h"
#include "ipc_types.h"
#include "shared_time_page.h"
#include "transport_impl.h"

namespace Tarvo {
namespace {
constexpr HiviewDFX::HiLogLabel kLabel = {HiviewDFX::LOG_CORE, 0xD0057CB, "SocketTransport"};

int WaitSecondsOf(const MessageOption& option)
{
    return option.GetWaitTime() > 0 ? option.GetWaitTime() : MessageOption::TF_WAIT_TIME;
}
}  // namespace

int SocketTransport::Impl::TransactHandle(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                                          MessageOption& option)
{
    std::shared_ptr<SocketConnection> connection;
    std::shared_ptr<SocketEndpoint> holder;
    WireFormat::Frame request;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = handles_.find(handle);
        if (found == handles_.end() || found->second.dead) {
            return ERR_DEAD_OBJECT;
        }
        if (controls_.HasFault(found->second.owner)) {
            return ERR_TRANSACTION_FAILED;
        }
        connection = found->second.connection;
        holder = found->second.holder.lock();
        request.target = found->second.cookie;
        request.id = nextId_++;
    }
    if (holder == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    bool oneWay = (option.GetFlags() & MessageOption::TF_ASYNC) != 0;
    request.type = WireFormat::REQUEST;
    request.flags = oneWay ? WireFormat::FLAG_ONE_WAY : 0;
    request.code = code;
    request.tag = CallingContext::Tag();
    request.data.assign(data.GetData(), data.GetData() + data.GetDataSize());
    std::vector<sptr<IRemoteObject>> holds;
    if (!ToEntries(holder, data, request.objects, holds)) {
        return ERR_INVALID_VALUE;
    }
    if (oneWay) {
        KeepUntilFreed(connection, false, request.id, std::move(holds));
        return SendOneWay(holder, connection, request);
    }
    std::shared_ptr<SocketConnection> channel = ChannelFor(holder, connection);
    KeepUntilFreed(channel, false, request.id, std::move(holds));
    return SendSync(holder, channel, request, option, reply);
}

int SocketTransport::Impl::SendSync(const std::shared_ptr<SocketEndpoint>& holder,
                                    const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& request,
                                    const MessageOption& option, MessageParcel& reply)
{
    // In virtual time the request runs next, and a sender holding the baton lends it for the wait:
    // the reply hands it straight back.
    const bool baton = Sequencer::Holding();
    request.turn = Sequencer::ReserveFirst();
    if (baton) {
        request.flags |= WireFormat::FLAG_BATON;
        Sequencer::Finish();
    }
    WireFormat::Frame answer;
    int status = connection->callChannel ? CallOnChannel(holder, connection, request, WaitSecondsOf(option), &answer)
                                         : Call(connection, request, WaitSecondsOf(option), &answer);
    if (baton) {
        Sequencer::Take(status == ERR_NONE && answer.turn != 0 ? answer.turn : Sequencer::ReserveFirst());
    }
    if (status == ERR_TIMED_OUT) {
        HiviewDFX::HiLog::Warn(kLabel, "request %{public}u to pid %{public}d timed out", request.code,
                               connection->peerPid);
    }
    if (status != ERR_NONE) {
        return status;
    }
    if (!Receive(holder, connection, answer, true, reply)) {
        return ERR_DEAD_OBJECT;
    }
    return static_cast<int>(answer.code);
}

int SocketTransport::Impl::SendOneWay(const std::shared_ptr<SocketEndpoint>& holder,
                                      const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& request)
{
    request.turn = Sequencer::Reserve();
    // Counted as work from before it leaves until the receiver has handled it, so quiet never
    // misses it on its way: within this process the receiver takes the count over; with time
    // shared between processes it is counted in the receiver's share.
    const std::pair<int32_t, uint64_t> key{holder->identity.pid, request.id};
    const pid_t countedFor = !connection->inProcess && SharedTimePage::Attached() ? connection->peerRealPid : 0;
    if (connection->inProcess) {
        std::lock_guard<std::mutex> lock(mutex_);
        handedOver_.emplace(key, WorkTracker::Token());
    } else if (countedFor != 0) {
        WorkTracker::GetInstance().BeginFor(countedFor);
        request.flags |= WireFormat::FLAG_COUNTED;
    }
    if (Send(connection, request)) {
        return ERR_NONE;
    }
    DropHandedOver(key);
    if (countedFor != 0) {
        WorkTracker::GetInstance().EndFor(countedFor);
    }
    Sequencer::Cancel(request.turn);
    return ERR_DEAD_OBJECT;
}

std::optional<WorkTracker::Token> SocketTransport::Impl::TakeHandedOverLocked(const std::pair<int32_t, uint64_t>& key)
{
    auto found = handedOver_.find(key);
    if (found == handedOver_.end()) {
        return std::nullopt;
    }
    std::optional<WorkTracker::Token> token(std::move(found->second));
    handedOver_.erase(found);
    return token;
}

void SocketTransport::Impl::DropHandedOver(const std::pair<int32_t, uint64_t>& key)
{
    std::optional<WorkTracker::Token> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    dropped = TakeHandedOverLocked(key);
}

void SocketTransport::Impl::KeepUntilFreed(const std::shared_ptr<SocketConnection>& connection, bool isReply,
                                           uint64_t id, std::vector<sptr<IRemoteObject>> holds)
{
    if (holds.empty()) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!connection->closed) {
            connection->pendingFree[{isReply, id}].swap(holds);
        }
    }
    // `holds` still has them if the connection had closed: released here, after the lock.
}

// Sends a frame that is answered (request, acquire, context lookup) and waits for the answer.
int SocketTransport::Impl::Call(const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& frame,
                                int waitSeconds, WireFormat::Frame* answer)
{
    auto waiter = std::make_shared<Waiter>();
    waiter->connection = connection.get();
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (frame.id == 0) {
            frame.id = nextId_++;
        }
        if (connection->closed || connection->ended) {
            return ERR_DEAD_OBJECT;
        }
        waiters_[frame.id] = waiter;
    }
    Send(connection, frame);
    std::unique_lock<std::mutex> lock(mutex_);
    bool done = waiter->woken.wait_for(lock, std::chrono::seconds(waitSeconds), [&waiter] { return waiter->done; });
    waiters_.erase(frame.id);
    if (!done) {
        return ERR_TIMED_OUT;
    }
    *answer = std::move(waiter->answer);
    return waiter->status;
}

void SocketTransport::Impl::HandleRequest(const std::shared_ptr<SocketEndpoint>& endpoint,
                                          const std::shared_ptr<SocketConnection>& from, WireFormat::Frame& frame)
{
    MessageParcel data;
    if (!Receive(endpoint, from, frame, false, data)) {
        return;
    }
    sptr<IRemoteObject> object;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        SocketNode* node = OwnNodeLocked(*endpoint, frame.target);
        object = node != nullptr ? node->weak.promote() : nullptr;
    }
    auto* stub = dynamic_cast<IPCObjectStub*>(object.GetRefPtr());
    std::shared_ptr<VirtualProcess> session = endpoint->session.lock();
    bool oneWay = (frame.flags & WireFormat::FLAG_ONE_WAY) != 0;
    MessageOption option(oneWay ? MessageOption::TF_ASYNC : MessageOption::TF_SYNC);
    MessageParcel reply;
    int status = ERR_DEAD_OBJECT;
    if (stub != nullptr && session != nullptr && session->IsAlive()) {
        CallingContext::Scope scope(&from->peer, frame.tag);
        status = stub->DispatchRequest(frame.code, data, reply, option);
        Observe(*endpoint, *from, frame, stub->GetObjectDescriptor(), status, reply);
    }
    if (!oneWay) {
        // A sender that gave the baton up for the wait gets it back first, with the reply.
        const bool baton = (frame.flags & WireFormat::FLAG_BATON) != 0;
        SendReply(endpoint, from, frame.id, status, reply, baton ? Sequencer::ReserveFirst() : Sequencer::kNoTurn);
    }
}

void SocketTransport::Impl::SendReply(const std::shared_ptr<SocketEndpoint>& endpoint,
                                      const std::shared_ptr<SocketConnection>& to, uint64_t id, int status,
                                      const MessageParcel& reply, Sequencer::Turn resume)
{
    WireFormat::Frame answer;
    answer.type = WireFormat::REPLY;
    answer.id = id;
    answer.turn = resume;
    answer.code = static_cast<uint32_t>(status);
    std::vector<sptr<IRemoteObject>> holds;
    if (ToEntries(endpoint, reply, answer.objects, holds)) {
        answer.data.assign(reply.GetData(), reply.GetData() + reply.GetDataSize());
    } else {
        answer.objects.clear();
        holds.clear();
        answer.code = static_cast<uint32_t>(ERR_INVALID_VALUE);
    }
    KeepUntilFreed(to, true, id, std::move(holds));
    Send(to, answer);
}

void SocketTransport::Impl::Observe(const SocketEndpoint& endpoint, const SocketConnection& from,
                                    const WireFormat::Frame& frame, const std::u16string& descriptor, int status,
                                    const MessageParcel& reply)
{
    const bool oneWay = (frame.flags & WireFormat::FLAG_ONE_WAY) != 0;
    controls_.Observe([&](TransactionRecord& record) {
        record = {descriptor, frame.code, status, oneWay, from.peer.pid, endpoint.identity.pid, frame.tag, &reply};
    });
}

void SocketTransport::Impl::OneWayDone(const SocketEndpoint& endpoint, uint64_t cookie)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (SocketNode* node = OwnNodeLocked(endpoint, cookie)) {
        --node->queuedOneWays;
    }
}

void SocketTransport::Impl::AnswerAcquire(const std::shared_ptr<SocketConnection>& to, uint64_t id, bool granted)
{
    WireFormat::Frame result;
    result.type = WireFormat::ACQUIRE_RESULT;
    result.id = id;
    result.code = granted ? 0 : 1;
    Send(to, result);
}

}  // namespace Tarvo
