#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "hilog.h"
#include "ipc_types.h"
#include "message_option.h"
#include "transport_impl.h"

namespace Tarvo {
namespace {
constexpr HiviewDFX::HiLogLabel kLabel = {HiviewDFX::LOG_CORE, 0xD0057CB, "SocketTransport"};

bool MakeAddress(const std::string& path, sockaddr_un& address)
{
    if (path.size() >= sizeof(address.sun_path)) {
        return false;
    }
    std::memset(&address, 0, sizeof(address));
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

bool ReadExactly(int fd, uint8_t* buffer, size_t size)
{
    size_t done = 0;
    while (done < size) {
        ssize_t got = recv(fd, buffer + done, size - done, 0);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return false;
        }
        done += static_cast<size_t>(got);
    }
    return true;
}

void SetReceiveTimeout(int fd, int seconds)
{
    timeval timeout{seconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
}
}  // namespace

int ListenAt(const std::string& path, int type)
{
    sockaddr_un address;
    if (!MakeAddress(path, address)) {
        HiviewDFX::HiLog::Error(kLabel, "socket path too long: %{public}s", path.c_str());
        return -1;
    }
    int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return -1;
    }
    // A file left by a process that died is stale: its endpoint is gone with it.
    unlink(path.c_str());
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || listen(fd, SOMAXCONN) != 0) {
        HiviewDFX::HiLog::Error(kLabel, "cannot listen at %{public}s: %{public}s", path.c_str(), std::strerror(errno));
        close(fd);
        return -1;
    }
    return fd;
}

int ListenAt(const std::string& path)
{
    return ListenAt(path, SOCK_STREAM);
}

int ConnectTo(const std::string& path, int type)
{
    sockaddr_un address;
    if (!MakeAddress(path, address)) {
        return -1;
    }
    int fd = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return -1;
    }
    int result = 0;
    do {
        result = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

int ConnectTo(const std::string& path)
{
    return ConnectTo(path, SOCK_STREAM);
}

bool PeerCredentials(int fd, pid_t& pid, uid_t& uid)
{
    ucred credentials{};
    socklen_t length = sizeof(credentials);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0) {
        return false;
    }
    pid = credentials.pid;
    uid = credentials.uid;
    return true;
}

SocketConnection::~SocketConnection()
{
    close(fd);
}

std::shared_ptr<SocketEndpoint> SocketTransport::Impl::EndpointOf(const std::shared_ptr<VirtualProcess>& session)
{
    std::shared_ptr<SocketEndpoint> stale;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = endpoints_.find(session.get());
        if (found != endpoints_.end() && found->second->session.lock() == session) {
            return found->second->closed ? nullptr : found->second;
        }
        if (found != endpoints_.end()) {
            // A session that went without being killed, and whose address was reused.
            stale = std::move(found->second);
            endpoints_.erase(found);
        }
    }
    if (stale != nullptr) {
        CloseEndpoint(stale);
    }
    return OpenEndpoint(session);
}

std::shared_ptr<SocketEndpoint> SocketTransport::Impl::OpenEndpoint(const std::shared_ptr<VirtualProcess>& session)
{
    if (!session->IsAlive()) {
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = endpoints_.find(session.get());
    if (found != endpoints_.end()) {
        return found->second->closed ? nullptr : found->second;
    }
    auto endpoint = std::make_shared<SocketEndpoint>();
    endpoint->session = session;
    endpoint->identity = session->Identity();
    endpoint->listenFd = ListenAt(options_.runDir + "/sock/" + std::to_string(endpoint->identity.pid));
    if (endpoint->listenFd < 0) {
        return nullptr;
    }
    endpoint->listenWatch = Watch(endpoint->listenFd, endpoint, nullptr);
    endpoint->callsFd = ListenAt(CallsPath(endpoint->identity.pid), SOCK_SEQPACKET);
    if (endpoint->callsFd >= 0) {
        endpoint->callsWatch = Watch(endpoint->callsFd, endpoint, nullptr);
    }
    endpoints_.emplace(session.get(), endpoint);
    return endpoint;
}

std::shared_ptr<SocketEndpoint> SocketTransport::Impl::LocalEndpoint(int32_t pid)
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [session, endpoint] : endpoints_) {
        // A session gone without being killed may have left its endpoint behind.
        if (endpoint->identity.pid == pid && !endpoint->closed && endpoint->session.lock() != nullptr) {
            return endpoint;
        }
    }
    return nullptr;
}

ProcessIdentity SocketTransport::Impl::IdentityOf(pid_t realPid, uid_t realUid, int32_t claimed, bool* verified)
{
    *verified = true;
    if (realPid == getpid()) {
        if (std::shared_ptr<SocketEndpoint> local = LocalEndpoint(claimed)) {
            return local->identity;
        }
    } else if (std::optional<ProcessIdentity> registered = registry_.Lookup(realPid, claimed)) {
        return *registered;
    }
    *verified = false;
    return {static_cast<int32_t>(realPid), static_cast<int32_t>(realUid), 0, 0, ""};
}

std::shared_ptr<SocketConnection> SocketTransport::Impl::ConnectionTo(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                                      int32_t pid)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = endpoint->peers.find(pid);
        if (found != endpoint->peers.end() && !found->second->closed) {
            return found->second;
        }
    }
    if (pid == endpoint->identity.pid) {
        return nullptr;
    }
    return Connect(endpoint, options_.runDir + "/sock/" + std::to_string(pid), pid);
}

// Says who we are, then learns who answers before anyone else reads the connection.
std::shared_ptr<SocketConnection> SocketTransport::Impl::Connect(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                                 const std::string& path, int32_t expectedPid,
                                                                 bool callChannel)
{
    int fd = ConnectTo(path, callChannel ? SOCK_SEQPACKET : SOCK_STREAM);
    if (fd < 0) {
        return nullptr;
    }
    auto connection = std::make_shared<SocketConnection>(fd);
    connection->callChannel = callChannel;
    connection->packets = callChannel;
    WireFormat::Frame hello;
    hello.type = WireFormat::HELLO;
    hello.flags = callChannel ? WireFormat::FLAG_CALLS : 0;
    hello.target = static_cast<uint32_t>(endpoint->identity.pid);
    std::vector<uint8_t> bytes = WireFormat::Encode(hello);
    uint8_t header[WireFormat::kHeaderSize];
    SetReceiveTimeout(fd, MessageOption::TF_WAIT_TIME);
    if (send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()) ||
        !ReadExactly(fd, header, sizeof(header))) {
        return nullptr;
    }
    SetReceiveTimeout(fd, 0);
    const uint8_t* input = header;
    size_t size = sizeof(header);
    WireFormat::Frame answer;
    uid_t uid = 0;
    if (connection->reader.Feed(input, size, answer) != WireFormat::FrameReader::Status::FRAME ||
        answer.type != WireFormat::HELLO || !PeerCredentials(fd, connection->peerRealPid, uid)) {
        return nullptr;
    }
    bool verified = false;
    int32_t claimed = static_cast<int32_t>(answer.target);
    ProcessIdentity peer = IdentityOf(connection->peerRealPid, uid, claimed, &verified);
    if (!verified || (expectedPid >= 0 && claimed != expectedPid)) {
        HiviewDFX::HiLog::Error(kLabel, "%{public}s answered as pid %{public}d, which it is not", path.c_str(),
                                claimed);
        return nullptr;
    }
    return Establish(endpoint, connection, peer, verified);
}

std::shared_ptr<SocketConnection> SocketTransport::Impl::Establish(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                                   const std::shared_ptr<SocketConnection>& connection,
                                                                   const ProcessIdentity& peer, bool verified)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (endpoint->closed) {
        return nullptr;
    }
    connection->endpoint = endpoint;
    connection->peer = peer;
    connection->peerPid = peer.pid;
    connection->inProcess = verified && connection->peerRealPid == getpid();
    connection->established = true;
    if (connection->callChannel) {
        endpoint->connections.insert(connection);
        return connection;
    }
    if (connection->watchId == 0) {
        endpoint->connections.insert(connection);
        connection->watchId = Watch(connection->fd, endpoint, connection);
    }
    auto [chosen, added] = endpoint->peers.try_emplace(peer.pid, connection);
    if (!added && chosen->second->closed) {
        chosen->second = connection;
    }
    return chosen->second;
}

bool SocketTransport::Impl::Send(const std::shared_ptr<SocketConnection>& connection, const WireFormat::Frame& frame)
{
    std::vector<uint8_t> bytes = WireFormat::Encode(frame);
    if (bytes.empty()) {
        return false;
    }
    bool sent = true;
    {
        std::lock_guard<std::mutex> lock(connection->writeMutex);
        size_t done = 0;
        const size_t most = connection->packets ? kPacketSize : bytes.size();
        while (done < bytes.size()) {
            ssize_t put = send(connection->fd, bytes.data() + done, std::min(most, bytes.size() - done), MSG_NOSIGNAL);
            if (put < 0 && errno == EINTR) {
                continue;
            }
            if (put <= 0) {
                sent = false;
                break;
            }
            done += static_cast<size_t>(put);
        }
    }
    if (!sent) {
        OnEnded(connection);
    }
    return sent;
}

void SocketTransport::Impl::Drop(const std::shared_ptr<SocketConnection>& connection, const std::string& reason)
{
    HiviewDFX::HiLog::Error(kLabel, "dropping peer pid %{public}d (real pid %{public}d): %{public}s",
                            connection->peerPid, connection->peerRealPid, reason.c_str());
    CloseConnection(connection);
}

uint64_t SocketTransport::Impl::Watch(int fd, std::shared_ptr<SocketEndpoint> endpoint,
                                      std::shared_ptr<SocketConnection> connection, std::string via)
{
    uint64_t id = nextWatch_++;
    epoll_event event{};
    event.events = EPOLLIN | EPOLLRDHUP;
    event.data.u64 = id;
    int listenFd = connection == nullptr ? fd : -1;
    watched_[id] = Watched{std::move(endpoint), std::move(connection), listenFd, std::move(via)};
    epoll_ctl(epollFd_, EPOLL_CTL_ADD, fd, &event);
    return id;
}

void SocketTransport::Impl::Unwatch(uint64_t watchId, int fd)
{
    epoll_ctl(epollFd_, EPOLL_CTL_DEL, fd, nullptr);
    watched_.erase(watchId);
}

}  // namespace Tarvo
