// Call channels: a thread that calls a peer synchronously gets a connection of its own to it. The
// caller writes the request and reads the reply itself; the peer serves the channel with a thread
// that runs each request as it reads it. A request coming back the other way while a side waits
// (a nested call) runs on the waiting thread, which then goes on waiting, as binder does.

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>

#include "ipc_types.h"
#include "transport_impl.h"

namespace Tarvo {
namespace {
// Threads serving channels in this real process; past it callers use the shared connection.
constexpr size_t kMaxServingChannels = 512;

struct CachedChannel {
    std::weak_ptr<SocketTransport::Impl> transport;
    const SocketTransport::Impl* transportKey = nullptr;
    const SocketEndpoint* holder = nullptr;
    std::weak_ptr<SocketConnection> shared;
    std::shared_ptr<SocketConnection> channel;

    bool Stale() const
    {
        std::shared_ptr<SocketConnection> alongside = shared.lock();
        return channel->closed || alongside == nullptr || alongside->closed || transport.expired();
    }
};

// The calling thread's channels; they close with the thread.
class ChannelCache {
public:
    ~ChannelCache()
    {
        for (CachedChannel& entry : entries_) {
            Close(entry);
        }
    }
    std::vector<CachedChannel>& Entries() { return entries_; }
    void Prune()
    {
        std::erase_if(entries_, [](CachedChannel& entry) {
            if (!entry.Stale()) {
                return false;
            }
            Close(entry);
            return true;
        });
    }

private:
    static void Close(CachedChannel& entry)
    {
        if (std::shared_ptr<SocketTransport::Impl> transport = entry.transport.lock()) {
            transport->CloseConnection(entry.channel);
        }
    }
    std::vector<CachedChannel> entries_;
};

thread_local ChannelCache tChannels;
// The channel whose request the thread is running: calls back to its peer go on it.
thread_local const std::shared_ptr<SocketConnection>* tServing = nullptr;

class ServingScope {
public:
    explicit ServingScope(const std::shared_ptr<SocketConnection>& channel) : previous_(tServing)
    {
        tServing = &channel;
    }
    ~ServingScope() { tServing = previous_; }
    ServingScope(const ServingScope&) = delete;
    ServingScope& operator=(const ServingScope&) = delete;

private:
    const std::shared_ptr<SocketConnection>* previous_;
};

// The packet's whole length (MSG_TRUNC), so that one longer than the buffer is seen as such.
ssize_t ReceivePacket(const std::shared_ptr<SocketConnection>& channel, uint8_t* buffer, int timeoutMs)
{
    SocketConnection::Inbox& inbox = channel->inbox;
    if (inbox.timeoutMs != timeoutMs) {
        timeval timeout{timeoutMs / 1000, (timeoutMs % 1000) * 1000};
        setsockopt(channel->fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
        inbox.timeoutMs = timeoutMs;
    }
    inbox.bytes.clear();
    inbox.start = 0;
    return recv(channel->fd, buffer, kPacketSize, MSG_TRUNC);
}

int Milliseconds(std::chrono::steady_clock::duration duration)
{
    auto count = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
    return static_cast<int>(std::clamp<decltype(count)>(count, 1, 1 << 30));
}
}  // namespace

std::string SocketTransport::Impl::CallsPath(int32_t pid) const
{
    return options_.runDir + "/sock/" + std::to_string(pid) + ".calls";
}

std::shared_ptr<SocketConnection> SocketTransport::Impl::ChannelFor(const std::shared_ptr<SocketEndpoint>& holder,
                                                                    const std::shared_ptr<SocketConnection>& shared)
{
    if (tServing != nullptr && (*tServing)->peerPid == shared->peerPid && !(*tServing)->closed &&
        (*tServing)->endpoint.lock() == holder) {
        return *tServing;
    }
    if (shared->noChannel || shared->closed) {
        return shared;
    }
    tChannels.Prune();
    for (const CachedChannel& entry : tChannels.Entries()) {
        if (entry.transportKey == this && entry.holder == holder.get() && entry.shared.lock() == shared) {
            return entry.channel;
        }
    }
    std::shared_ptr<SocketConnection> channel = Connect(holder, CallsPath(shared->peerPid), shared->peerPid, true);
    if (channel == nullptr) {
        shared->noChannel = true;
        return shared;
    }
    tChannels.Entries().push_back({weak_from_this(), this, holder.get(), shared, channel});
    return channel;
}

// Sends a request on the channel and reads until its reply, serving what comes back meanwhile.
int SocketTransport::Impl::CallOnChannel(const std::shared_ptr<SocketEndpoint>& holder,
                                         const std::shared_ptr<SocketConnection>& channel,
                                         const WireFormat::Frame& request, int waitSeconds, WireFormat::Frame* answer)
{
    if (!Send(channel, request)) {
        return ERR_DEAD_OBJECT;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(waitSeconds);
    int timeoutMs = Milliseconds(std::chrono::seconds(waitSeconds));
    for (;;) {
        WireFormat::Frame frame;
        ChannelRead read = ReadChannel(channel, frame, timeoutMs);
        if (read == ChannelRead::FRAME && frame.type == WireFormat::REPLY && frame.id == request.id) {
            *answer = std::move(frame);
            return ERR_NONE;
        }
        if (read == ChannelRead::FRAME && !OnChannelFrame(holder, channel, frame)) {
            return ERR_DEAD_OBJECT;
        }
        const auto left = deadline - std::chrono::steady_clock::now();
        if (read == ChannelRead::TIMED_OUT || (read == ChannelRead::FRAME && left.count() <= 0)) {
            // The reply may still come, and is then passed over. The handler may still run: this
            // thread's next call takes a fresh channel rather than wait behind it, unless this is
            // the channel the thread serves, whose other side waits on it.
            if (tServing == nullptr || *tServing != channel) {
                CloseConnection(channel);
            }
            return ERR_TIMED_OUT;
        }
        if (read == ChannelRead::CLOSED) {
            return ERR_DEAD_OBJECT;
        }
        timeoutMs = Milliseconds(left);
    }
}

// Reads one frame. Packets never hold more than their frame, but a peer may pack several: what is
// left over waits in the inbox.
SocketTransport::Impl::ChannelRead SocketTransport::Impl::ReadChannel(const std::shared_ptr<SocketConnection>& channel,
                                                                      WireFormat::Frame& frame, int timeoutMs)
{
    // On the heap, made on first use: a thread_local array would be zeroed in every thread.
    static thread_local std::unique_ptr<uint8_t[]> received;
    if (received == nullptr) {
        received.reset(new uint8_t[kPacketSize]);
    }
    uint8_t* packet = received.get();
    SocketConnection::Inbox& inbox = channel->inbox;
    for (;;) {
        const bool buffered = inbox.start < inbox.bytes.size();
        ssize_t got = buffered ? static_cast<ssize_t>(inbox.bytes.size() - inbox.start)
                               : ReceivePacket(channel, packet, timeoutMs);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            return ChannelRead::TIMED_OUT;
        }
        if (got < 0 || (got == 0 && channel->reader.AtFrameBoundary())) {
            CloseConnection(channel);
            return ChannelRead::CLOSED;
        }
        if (got == 0 || static_cast<size_t>(got) > kPacketSize) {
            Drop(channel, got > 0 ? "packet over the size limit" : "stream ended inside a frame");
            return ChannelRead::CLOSED;
        }
        const uint8_t* input = buffered ? inbox.bytes.data() + inbox.start : packet;
        size_t left = static_cast<size_t>(got);
        WireFormat::FrameReader::Status status = channel->reader.Feed(input, left, frame);
        if (buffered) {
            inbox.start = inbox.bytes.size() - left;
        } else if (left > 0) {
            inbox.bytes.assign(input, input + left);
            inbox.start = 0;
        }
        if (status == WireFormat::FrameReader::Status::FRAME) {
            return ChannelRead::FRAME;
        }
        if (status == WireFormat::FrameReader::Status::BROKEN) {
            Drop(channel, channel->reader.Error());
            return ChannelRead::CLOSED;
        }
    }
}

bool SocketTransport::Impl::OnChannelFrame(const std::shared_ptr<SocketEndpoint>& endpoint,
                                           const std::shared_ptr<SocketConnection>& channel, WireFormat::Frame& frame)
{
    switch (frame.type) {
        case WireFormat::REQUEST:
            return ServeOnChannel(endpoint, channel, frame);
        case WireFormat::FREE:
            OnFree(channel, frame);
            return true;
        case WireFormat::REPLY:
            // Answers a call that has given up waiting.
            return true;
        default:
            Drop(channel, "frame of type " + std::to_string(frame.type) + " on a call channel");
            return false;
    }
}

// Runs a request read from a channel on this thread, in the turn its sender reserved, counted as
// work while it runs, as the session's pool would run it.
bool SocketTransport::Impl::ServeOnChannel(const std::shared_ptr<SocketEndpoint>& endpoint,
                                           const std::shared_ptr<SocketConnection>& channel, WireFormat::Frame& frame)
{
    bool admitted = false;
    if ((frame.flags & WireFormat::FLAG_ONE_WAY) == 0) {
        std::lock_guard<std::mutex> lock(mutex_);
        SocketNode* node = OwnNodeLocked(*endpoint, frame.target);
        admitted = node != nullptr && PeerHoldsLocked(*node, channel->peerPid) &&
                   CheckObjectsLocked(*endpoint, *channel, frame);
    }
    if (!admitted) {
        Sequencer::Cancel(frame.turn);
        Drop(channel, "request naming an object it does not hold");
        return false;
    }
    // A session gone meanwhile is answered as dead by the handling itself.
    std::shared_ptr<VirtualProcess> session = endpoint->session.lock();
    const Sequencer::Turn turn = Sequencer::Adopt(frame.turn) ? frame.turn : Sequencer::Reserve();
    {
        WorkTracker::Token working;
        Sequencer::Take(turn);
        ScopedProcess scope(session);
        ServingScope serving(channel);
        HandleRequest(endpoint, channel, frame);
    }
    Sequencer::Finish();
    return !channel->closed;
}

bool SocketTransport::Impl::StartServing(const std::shared_ptr<SocketEndpoint>& endpoint,
                                         const std::shared_ptr<SocketConnection>& channel)
{
    bool serving = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        serving = servingChannels_ < kMaxServingChannels && !channel->closed;
        if (serving) {
            ++servingChannels_;
            Unwatch(channel->watchId, channel->fd);
            channel->watchId = 0;
        }
    }
    if (!serving) {
        Drop(channel, "too many call channels");
        return false;
    }
    std::thread([self = shared_from_this(), endpoint, channel] { self->ServeChannel(endpoint, channel); }).detach();
    return true;
}

void SocketTransport::Impl::ServeChannel(const std::shared_ptr<SocketEndpoint>& endpoint,
                                         const std::shared_ptr<SocketConnection>& channel)
{
    for (;;) {
        WireFormat::Frame frame;
        if (ReadChannel(channel, frame, 0) != ChannelRead::FRAME || !OnChannelFrame(endpoint, channel, frame)) {
            break;
        }
    }
    CloseConnection(channel);
    std::lock_guard<std::mutex> lock(mutex_);
    --servingChannels_;
}

}  // namespace Tarvo
