#include <chrono>

#include "calling_context.h"
#include "hilog.h"
#include "ipc_types.h"
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
        if (faultyPids_.count(found->second.owner) != 0) {
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
    KeepUntilFreed(connection, false, request.id, std::move(holds));
    if (oneWay) {
        // Counted before it leaves, so that a count of the device never misses it on its way.
        ++oneWaySent_;
        if (Send(connection, request)) {
            return ERR_NONE;
        }
        --oneWaySent_;
        return ERR_DEAD_OBJECT;
    }
    WireFormat::Frame answer;
    int status = Call(connection, request, WaitSecondsOf(option), &answer);
    if (status == ERR_TIMED_OUT) {
        HiviewDFX::HiLog::Warn(kLabel, "request %{public}u to pid %{public}d timed out", code, connection->peerPid);
    }
    if (status != ERR_NONE) {
        return status;
    }
    if (!Receive(holder, connection, answer, true, reply)) {
        return ERR_DEAD_OBJECT;
    }
    return static_cast<int>(answer.code);
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
        if (connection->closed) {
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
        SendReply(endpoint, from, frame.id, status, reply);
    }
}

void SocketTransport::Impl::SendReply(const std::shared_ptr<SocketEndpoint>& endpoint,
                                      const std::shared_ptr<SocketConnection>& to, uint64_t id, int status,
                                      const MessageParcel& reply)
{
    WireFormat::Frame answer;
    answer.type = WireFormat::REPLY;
    answer.id = id;
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
    std::shared_ptr<const TransactionObserver> observer;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        observer = observer_;
    }
    if (observer == nullptr) {
        return;
    }
    TransactionRecord record;
    record.descriptor = descriptor;
    record.code = frame.code;
    record.status = status;
    record.oneWay = (frame.flags & WireFormat::FLAG_ONE_WAY) != 0;
    record.callerPid = from.peer.pid;
    record.targetPid = endpoint.identity.pid;
    record.tag = frame.tag;
    record.reply = &reply;
    (*observer)(record);
}

// One at a time per object, in the order received.
void SocketTransport::Impl::DrainOneWay(const std::shared_ptr<SocketEndpoint>& endpoint, uint64_t cookie)
{
    for (;;) {
        SocketNode::OneWay next;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            SocketNode* node = OwnNodeLocked(*endpoint, cookie);
            if (node == nullptr) {
                return;
            }
            if (node->oneWay.empty()) {
                node->draining = false;
                return;
            }
            next = std::move(node->oneWay.front());
            node->oneWay.pop_front();
        }
        HandleRequest(endpoint, next.from, next.frame);
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
