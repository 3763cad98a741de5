#include <unistd.h>

#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {

int ListenAt(const std::string& path);
int ConnectTo(const std::string& path);

// A lookup on a connection made to a well-known name answers the object bound there; one on an
// endpoint's own socket answers the context object if this endpoint owns it.
void SocketTransport::Impl::AnswerContextLookup(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                const std::shared_ptr<SocketConnection>& to, uint64_t id)
{
    WireFormat::Frame answer;
    answer.type = WireFormat::REPLY;
    answer.id = id;
    std::vector<sptr<IRemoteObject>> holds;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto binding = named_.find(to->via.empty() ? std::string(SocketTransport::kContextName) : to->via);
        SocketNode* node = binding != named_.end() && binding->second.endpoint.lock() == endpoint
                               ? OwnNodeLocked(*endpoint, binding->second.cookie)
                               : nullptr;
        sptr<IRemoteObject> object = node != nullptr ? node->strongHold : nullptr;
        if (object != nullptr) {
            answer.objects.push_back({endpoint->identity.pid, binding->second.cookie, node->descriptor});
            holds.push_back(std::move(object));
        }
    }
    KeepUntilFreed(to, true, id, std::move(holds));
    Send(to, answer);
}

sptr<IRemoteObject> SocketTransport::Impl::LookUpNamed(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                       const std::string& name)
{
    std::shared_ptr<SocketConnection> connection;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        connection = endpoint->namedConnections[name].lock();
    }
    if (connection == nullptr || connection->closed) {
        connection = Connect(endpoint, options_.runDir + "/" + name, -1);
        if (connection == nullptr) {
            return nullptr;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        connection->toName = true;
        endpoint->namedConnections[name] = connection;
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

uint64_t SocketTransport::Impl::BoundCookie(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto binding = named_.find(name);
    return binding != named_.end() && binding->second.endpoint.lock() != nullptr ? binding->second.cookie : 0;
}

// The owner listens at RUNDIR/<name>; a name held by a live endpoint of another real process is not
// taken over.
bool SocketTransport::Impl::BindNamed(const std::string& name, const std::shared_ptr<SocketEndpoint>& endpoint,
                                      uint64_t cookie)
{
    std::string path = options_.runDir + "/" + name;
    if (BoundCookie(name) == 0) {
        int probe = ConnectTo(path);
        if (probe >= 0) {
            close(probe);
            return false;
        }
    }
    UnbindNamed(name);
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
    ++node->published;
    node->strongHold = held;
    named_[name] = NamedBinding{endpoint, cookie, fd, Watch(fd, endpoint, nullptr, name)};
    return true;
}

sptr<IRemoteObject> SocketTransport::Impl::CloseBindingLocked(const std::string& name, NamedBinding& binding)
{
    if (binding.fd >= 0) {
        Unwatch(binding.watch, binding.fd);
        unlink((options_.runDir + "/" + name).c_str());
        close(binding.fd);
        binding.fd = -1;
    }
    std::shared_ptr<SocketEndpoint> endpoint = binding.endpoint.lock();
    SocketNode* node = endpoint != nullptr ? OwnNodeLocked(*endpoint, binding.cookie) : nullptr;
    if (node == nullptr || --node->published > 0 || StrongHeldLocked(*node)) {
        return nullptr;
    }
    return std::move(node->strongHold);
}

void SocketTransport::Impl::UnbindNamed(const std::string& name)
{
    sptr<IRemoteObject> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    auto binding = named_.find(name);
    if (binding == named_.end()) {
        return;
    }
    dropped = CloseBindingLocked(name, binding->second);
    named_.erase(binding);
}

}  // namespace Tarvo
