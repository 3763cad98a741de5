#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "transport_impl.h"

namespace Tarvo {

bool PeerCredentials(int fd, pid_t& pid, uid_t& uid);

namespace {
constexpr size_t kReadChunk = 64 * 1024;
// Reads per wake-up of one connection, so that a busy peer does not starve the others.
constexpr int kReadsPerTurn = 16;
}  // namespace

void SocketTransport::Impl::IoLoop()
{
    epoll_event events[32];
    for (;;) {
        int count = epoll_wait(epollFd_, events, 32, -1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        for (int i = 0; i < count; ++i) {
            if (events[i].data.u64 == 0) {
                return;
            }
            Watched watched;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                auto found = watched_.find(events[i].data.u64);
                if (found == watched_.end()) {
                    continue;
                }
                watched = found->second;
            }
            if (watched.connection != nullptr) {
                ReadFrom(watched.connection);
            } else {
                Accept(watched.endpoint, watched.listenFd, watched.via);
            }
        }
    }
}

void SocketTransport::Impl::Accept(const std::shared_ptr<SocketEndpoint>& endpoint, int listenFd,
                                   const std::string& via)
{
    int fd = accept4(listenFd, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
        return;
    }
    auto connection = std::make_shared<SocketConnection>(fd);
    uid_t uid = 0;
    int type = 0;
    socklen_t length = sizeof(type);
    if (!PeerCredentials(fd, connection->peerRealPid, uid) ||
        getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &length) != 0) {
        return;
    }
    connection->packets = type == SOCK_SEQPACKET;
    connection->peer.uid = static_cast<int32_t>(uid);
    connection->peerPid = connection->peerRealPid;
    connection->endpoint = endpoint;
    connection->via = via;
    std::lock_guard<std::mutex> lock(mutex_);
    if (endpoint->closed) {
        return;
    }
    endpoint->connections.insert(connection);
    connection->watchId = Watch(fd, endpoint, connection);
}

void SocketTransport::Impl::ReadFrom(const std::shared_ptr<SocketConnection>& connection)
{
    // On the heap, made on first use: a thread_local array would be zeroed in every thread.
    static thread_local std::unique_ptr<uint8_t[]> chunk;
    if (chunk == nullptr) {
        chunk.reset(new uint8_t[kReadChunk]);
    }
    uint8_t* buffer = chunk.get();
    for (int turn = 0; turn < kReadsPerTurn && !connection->closed; ++turn) {
        ssize_t got = recv(connection->fd, buffer, kReadChunk, MSG_DONTWAIT);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            return;
        }
        if (got <= 0) {
            if (got == 0 && !connection->reader.AtFrameBoundary()) {
                Drop(connection, "stream ended inside a frame");
            } else {
                OnEnded(connection);
            }
            return;
        }
        const uint8_t* input = buffer;
        size_t left = static_cast<size_t>(got);
        while (left > 0 && !connection->closed) {
            WireFormat::Frame frame;
            WireFormat::FrameReader::Status status = connection->reader.Feed(input, left, frame);
            if (status == WireFormat::FrameReader::Status::BROKEN) {
                Drop(connection, connection->reader.Error());
                return;
            }
            if (status == WireFormat::FrameReader::Status::FRAME && !OnFrame(connection, frame)) {
                return;
            }
        }
    }
}

bool SocketTransport::Impl::OnFrame(const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& frame)
{
    if (!connection->established) {
        if (frame.type != WireFormat::HELLO) {
            Drop(connection, "frame before hello");
            return false;
        }
        return OnHello(connection, frame);
    }
    std::shared_ptr<SocketEndpoint> endpoint = connection->endpoint.lock();
    if (endpoint == nullptr) {
        return false;
    }
    switch (frame.type) {
        case WireFormat::REQUEST:
            return OnRequest(endpoint, connection, frame);
        case WireFormat::REPLY:
        case WireFormat::ACQUIRE_RESULT:
            return OnAnswer(connection, frame);
        case WireFormat::ACQUIRE:
            return OnAcquire(endpoint, connection, frame);
        case WireFormat::RELEASE:
            return OnRelease(connection, frame);
        case WireFormat::FREE:
            OnFree(connection, frame);
            return true;
        case WireFormat::CONTEXT_LOOKUP:
            PostAnswer([self = shared_from_this(), endpoint, connection, id = frame.id] {
                self->AnswerContextLookup(endpoint, connection, id);
            });
            return true;
        default:
            Drop(connection, "second hello");
            return false;
    }
}

bool SocketTransport::Impl::OnHello(const std::shared_ptr<SocketConnection>& connection, const WireFormat::Frame& frame)
{
    std::shared_ptr<SocketEndpoint> endpoint = connection->endpoint.lock();
    if (endpoint == nullptr) {
        return false;
    }
    bool verified = false;
    ProcessIdentity peer = IdentityOf(connection->peerRealPid, static_cast<uid_t>(connection->peer.uid),
                                      static_cast<int32_t>(frame.target), &verified);
    connection->callChannel = (frame.flags & WireFormat::FLAG_CALLS) != 0;
    // Call channels are opened at the packet socket, and only they.
    if (connection->callChannel != connection->packets) {
        Drop(connection, "hello of the wrong kind for its socket");
        return false;
    }
    if (Establish(endpoint, connection, peer, verified) == nullptr) {
        return false;
    }
    // A call channel is served by a thread of its own from here on; one refused is closed before
    // the answer, so that its caller goes over the shared connection instead.
    if (connection->callChannel && !StartServing(endpoint, connection)) {
        return false;
    }
    WireFormat::Frame hello;
    hello.type = WireFormat::HELLO;
    hello.target = static_cast<uint32_t>(endpoint->identity.pid);
    return Send(connection, hello) && !connection->callChannel;
}

// Work the I/O thread hands to the endpoint's session; false if the session takes no more.
bool SocketTransport::Impl::PostTo(const std::shared_ptr<SocketEndpoint>& endpoint, std::function<void()> work,
                                   Sequencer::Turn turn)
{
    std::shared_ptr<VirtualProcess> session = endpoint->session.lock();
    if (session == nullptr) {
        Sequencer::Cancel(turn);
        return false;
    }
    return turn != Sequencer::kNoTurn ? session->PostTurn(turn, std::move(work)) : session->Post(std::move(work));
}

bool SocketTransport::Impl::PostToLane(const std::shared_ptr<SocketEndpoint>& endpoint, uint64_t cookie,
                                       const std::shared_ptr<SocketNode::OneWay>& request, Sequencer::Turn turn)
{
    std::shared_ptr<VirtualProcess> session = endpoint->session.lock();
    if (session == nullptr) {
        Sequencer::Cancel(turn);
        return false;
    }
    // The object's cookie names it within its process, whose lane this is.
    const auto* key = reinterpret_cast<const void*>(static_cast<uintptr_t>(cookie));
    return session->PostInLane(
        key,
        [self = shared_from_this(), endpoint, cookie, request] {
            self->HandleRequest(endpoint, request->from, request->frame);
            request->pending.reset();
            self->OneWayDone(*endpoint, cookie);
        },
        turn);
}

void SocketTransport::Impl::PostAnswer(std::function<void()> work)
{
    {
        std::lock_guard<std::mutex> lock(answersMutex_);
        if (answersStopping_) {
            return;
        }
        answers_.push_back({std::move(work), WorkTracker::Token()});
    }
    answersReady_.notify_one();
}

void SocketTransport::Impl::AnswerLoop()
{
    std::unique_lock<std::mutex> lock(answersMutex_);
    for (;;) {
        answersReady_.wait(lock, [this] { return answersStopping_ || !answers_.empty(); });
        if (answers_.empty()) {
            return;
        }
        QueuedAnswer next = std::move(answers_.front());
        answers_.pop_front();
        lock.unlock();
        next.work();
        next = {};  // what it held goes before the work counts as done
        lock.lock();
    }
}

}  // namespace Tarvo
