#include "socket_transport.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {

SocketTransport::Impl::Impl(SocketTransport::Options options)
    : options_(std::move(options)), registry_(options_.runDir + "/registry")
{
    mkdir(options_.runDir.c_str(), 0700);
    mkdir((options_.runDir + "/sock").c_str(), 0700);
    mkdir((options_.runDir + "/registry").c_str(), 0700);
    epollFd_ = epoll_create1(EPOLL_CLOEXEC);
    wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = 0;
    epoll_ctl(epollFd_, EPOLL_CTL_ADD, wakeFd_, &event);
}

SocketTransport::Impl::~Impl()
{
    close(wakeFd_);
    close(epollFd_);
}

void SocketTransport::Impl::Start()
{
    ioThread_ = std::thread([self = shared_from_this()] { self->IoLoop(); });
    answerThread_ = std::thread([self = shared_from_this()] { self->AnswerLoop(); });
    std::weak_ptr<Impl> weak = shared_from_this();
    VirtualProcess::AddKillObserver([weak](VirtualProcess& killed) {
        if (std::shared_ptr<Impl> self = weak.lock()) {
            self->OnKilled(killed);
        }
    });
}

void SocketTransport::Impl::Stop()
{
    uint64_t one = 1;
    [[maybe_unused]] ssize_t written = write(wakeFd_, &one, sizeof(one));
    if (ioThread_.joinable()) {
        ioThread_.join();
    }
    {
        std::lock_guard<std::mutex> lock(answersMutex_);
        answersStopping_ = true;
    }
    answersReady_.notify_all();
    if (answerThread_.joinable()) {
        answerThread_.join();
    }
    std::vector<std::shared_ptr<SocketEndpoint>> endpoints;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [session, endpoint] : endpoints_) {
            endpoints.push_back(endpoint);
        }
        endpoints_.clear();
    }
    for (const auto& endpoint : endpoints) {
        CloseEndpoint(endpoint);
    }
    // Posted work may still hold the state; the tables go with the last of it.
    std::lock_guard<std::mutex> lock(mutex_);
    watched_.clear();
}

SocketTransport::SocketTransport(Options options) : impl_(std::make_shared<Impl>(std::move(options)))
{
    impl_->Start();
}

SocketTransport::~SocketTransport()
{
    impl_->Stop();
}

std::shared_ptr<ProcessSession> SocketTransport::CurrentSession()
{
    return VirtualProcess::Current();
}

int SocketTransport::Transact(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                              MessageOption& option)
{
    return impl_->TransactHandle(handle, code, data, reply, option);
}

int SocketTransport::TransactStub(const sptr<IPCObjectStub>& stub, uint32_t code, MessageParcel& data,
                                  MessageParcel& reply, MessageOption& option)
{
    WireObject wire;
    if (stub == nullptr || !FlattenObject(stub, wire)) {
        return stub == nullptr ? ERR_INVALID_VALUE : ERR_DEAD_OBJECT;
    }
    sptr<IRemoteObject> object = UnflattenObject(wire);
    if (object == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    if (!object->IsProxyObject()) {
        return stub->SendRequest(code, data, reply, option);
    }
    return object->SendRequest(code, data, reply, option);
}

bool SocketTransport::FlattenObject(const sptr<IRemoteObject>& object, WireObject& wire)
{
    if (object == nullptr) {
        return false;
    }
    if (object->IsProxyObject()) {
        auto* proxy = dynamic_cast<IPCObjectProxy*>(object.GetRefPtr());
        if (proxy == nullptr) {
            return false;
        }
        wire = {WireObject::HANDLE, proxy->GetHandle()};
        return true;
    }
    auto* stub = dynamic_cast<IPCObjectStub*>(object.GetRefPtr());
    std::shared_ptr<VirtualProcess> owner =
        stub != nullptr ? std::dynamic_pointer_cast<VirtualProcess>(stub->GetOwner()) : VirtualProcess::Current();
    if (owner == nullptr) {
        return false;
    }
    // A dead owner has no endpoint; readers then get a dead proxy.
    std::shared_ptr<SocketEndpoint> endpoint = impl_->EndpointOf(owner);
    wire = {WireObject::LOCAL, impl_->CookieFor(object, endpoint, owner->Pid())};
    return true;
}

sptr<IRemoteObject> SocketTransport::UnflattenObject(const WireObject& wire)
{
    std::shared_ptr<SocketEndpoint> reader = impl_->EndpointOf(VirtualProcess::Current());
    if (reader == nullptr) {
        return nullptr;
    }
    return impl_->Resolve(reader, wire);
}

void SocketTransport::ReleaseHandle(uint64_t handle)
{
    impl_->ReleaseRefs(handle);
}

sptr<IRemoteObject> SocketTransport::GetContextObject()
{
    return GetNamed(kContextName);
}

bool SocketTransport::SetContextObject(const sptr<IRemoteObject>& object)
{
    return PublishNamed(kContextName, object);
}

bool SocketTransport::ValidName(const std::string& name)
{
    if (name.empty() || name.size() > kMaxNameLength || name == "sock" || name == "registry" || name == "lock") {
        return false;
    }
    return std::all_of(name.begin(), name.end(),
                       [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; });
}

sptr<IRemoteObject> SocketTransport::GetNamed(const std::string& name)
{
    std::shared_ptr<SocketEndpoint> reader = impl_->EndpointOf(VirtualProcess::Current());
    if (reader == nullptr || !ValidName(name)) {
        return nullptr;
    }
    uint64_t cookie = impl_->BoundCookie(name);
    sptr<IRemoteObject> object =
        cookie != 0 ? impl_->Resolve(reader, {WireObject::LOCAL, cookie}) : impl_->LookUpNamed(reader, name);
    return object == nullptr || object->IsObjectDead() ? nullptr : object;
}

bool SocketTransport::PublishNamed(const std::string& name, const sptr<IRemoteObject>& object)
{
    if (!ValidName(name)) {
        return false;
    }
    if (object == nullptr) {
        impl_->UnbindNamed(name);
        return true;
    }
    WireObject wire;
    if (!FlattenObject(object, wire)) {
        return false;
    }
    std::shared_ptr<SocketEndpoint> owner;
    uint64_t cookie = 0;
    int32_t ownerPid = 0;
    {
        std::lock_guard<std::mutex> lock(impl_->mutex_);
        if (auto node = impl_->nodes_.find(wire.value); wire.kind == WireObject::LOCAL && node != impl_->nodes_.end()) {
            cookie = wire.value;
            owner = node->second.owner.lock();
        } else if (auto handle = impl_->handles_.find(wire.value);
                   wire.kind == WireObject::HANDLE && handle != impl_->handles_.end()) {
            cookie = handle->second.cookie;
            ownerPid = handle->second.owner;
        }
    }
    if (owner == nullptr && ownerPid != 0) {
        // Only an object of a session of this real process can be bound here.
        owner = impl_->LocalEndpoint(ownerPid);
    }
    return owner != nullptr && impl_->BindNamed(name, owner, cookie);
}

void SocketTransport::SetDeathsWhenTold(bool told)
{
    impl_->deathsWhenTold_ = told;
}

void SocketTransport::PeerDied(int32_t pid)
{
    impl_->PeerDied(pid);
}

void SocketTransport::SetTransportFault(int32_t pid, bool fail)
{
    impl_->controls_.SetFault(pid, fail);
}

void SocketTransport::SetTransactionObserver(TransactionObserver observer)
{
    impl_->controls_.SetObserver(std::move(observer));
}

}  // namespace Tarvo
