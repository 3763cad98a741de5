#include <unistd.h>

#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {

int ListenAt(const std::string& path);
int ConnectTo(const std::string& path);

void SocketTransport::Impl::AnswerContextLookup(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                const std::shared_ptr<SocketConnection>& to, uint64_t id)
{
    WireFormat::Frame answer;
    answer.type = WireFormat::REPLY;
    answer.id = id;
    std::vector<sptr<IRemoteObject>> holds;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        SocketNode* node = contextEndpoint_.lock() == endpoint ? OwnNodeLocked(*endpoint, contextCookie_) : nullptr;
        sptr<IRemoteObject> object = node != nullptr ? node->strongHold : nullptr;
        if (object != nullptr) {
            answer.objects.push_back({endpoint->identity.pid, contextCookie_, node->descriptor});
            holds.push_back(std::move(object));
        }
    }
    KeepUntilFreed(to, true, id, std::move(holds));
    Send(to, answer);
}

sptr<IRemoteObject> SocketTransport::Impl::LookUpContext(const std::shared_ptr<SocketEndpoint>& endpoint)
{
    std::shared_ptr<SocketConnection> connection;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        connection = endpoint->contextConnection.lock();
    }
    if (connection == nullptr || connection->closed) {
        connection = Connect(endpoint, options_.runDir + "/samgr", -1);
        if (connection == nullptr) {
            return nullptr;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        endpoint->contextConnection = connection;
    }
    WireFormat::Frame lookup;
    lookup.type = WireFormat::CONTEXT_LOOKUP;
    WireFormat::Frame answer;
    MessageParcel parcel;
    if (Call(connection, lookup, MessageOption::TF_WAIT_TIME, &answer) != ERR_NONE ||
        !Receive(endpoint, connection, answer, true, parcel) || parcel.GetObjectCount() != 1) {
        return nullptr;
    }
    return parcel.GetObjects().front().hold;
}

// The context object's owner also listens at the well-known name; a name held by a live
// endpoint of another real process is not taken over.
bool SocketTransport::Impl::BindContext(const std::shared_ptr<SocketEndpoint>& endpoint, uint64_t cookie)
{
    std::string path = options_.runDir + "/samgr";
    std::shared_ptr<SocketEndpoint> previous;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        previous = contextEndpoint_.lock();
    }
    if (previous == nullptr) {
        int probe = ConnectTo(path);
        if (probe >= 0) {
            close(probe);
            return false;
        }
    }
    UnbindContext();
    int fd = ListenAt(path);
    if (fd < 0) {
        return false;
    }
    sptr<IRemoteObject> held;
    std::lock_guard<std::mutex> lock(mutex_);
    SocketNode* node = OwnNodeLocked(*endpoint, cookie);
    held = node != nullptr ? node->weak.promote() : nullptr;
    if (held == nullptr || endpoint->closed) {
        close(fd);
        unlink(path.c_str());
        return false;
    }
    node->context = true;
    node->strongHold = held;
    endpoint->contextFd = fd;
    endpoint->contextWatch = Watch(fd, endpoint, nullptr);
    contextEndpoint_ = endpoint;
    contextCookie_ = cookie;
    return true;
}

void SocketTransport::Impl::UnbindContext()
{
    sptr<IRemoteObject> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    std::shared_ptr<SocketEndpoint> endpoint = contextEndpoint_.lock();
    contextEndpoint_.reset();
    if (endpoint == nullptr) {
        return;
    }
    if (endpoint->contextFd >= 0) {
        Unwatch(endpoint->contextWatch, endpoint->contextFd);
        unlink((options_.runDir + "/samgr").c_str());
        close(endpoint->contextFd);
        endpoint->contextFd = -1;
    }
    if (SocketNode* node = OwnNodeLocked(*endpoint, contextCookie_)) {
        node->context = false;
        if (!StrongHeldLocked(*node)) {
            dropped = std::move(node->strongHold);
        }
    }
}

}  // namespace Tarvo
