#ifndef TARVO_IPC_SOCKET_TRANSPORT_IMPL_H
#define TARVO_IPC_SOCKET_TRANSPORT_IMPL_H

// The socket transport's state. One mutex guards every table; it is never held while writing to
// a socket, waiting, or dropping a reference that may be an object's last.
//
// Objects have a global address (owner emulated pid, cookie). Cookies are unique within this real
// process, so a parcel may carry any local session's object as a LOCAL cookie. Sessions of one real
// process trust each other (the kernel says the peer is us); other peers must hold what they name.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ipc_object_proxy.h"
#include "ipc_object_stub.h"
#include "process_registry.h"
#include "sequencer.h"
#include "socket_transport.h"
#include "transport_controls.h"
#include "virtual_process.h"
#include "wire_frame.h"
#include "work_tracker.h"

namespace Tarvo {

struct SocketEndpoint;

// The largest packet a call channel carries; a longer frame goes in several.
constexpr size_t kPacketSize = 64 * 1024;

struct SocketConnection {
    explicit SocketConnection(int fd) : fd(fd) {}
    ~SocketConnection();
    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    const int fd;
    uint64_t watchId = 0;
    std::weak_ptr<SocketEndpoint> endpoint;
    // The well-known name it was accepted at; empty for the endpoint's own socket.
    std::string via;
    // Made to reach a well-known name (the device's hub, its service manager).
    bool toName = false;
    // Set once the hello is through.
    ProcessIdentity peer;
    int32_t peerPid = 0;
    pid_t peerRealPid = 0;
    bool inProcess = false;
    bool established = false;
    std::atomic<bool> closed{false};
    // The peer has gone, and its death waits to be told (under mutex_).
    bool ended = false;
    // A call channel carries the synchronous calls of one thread of the connecting side only; it
    // is never a peer's shared connection and the I/O thread does not read it: the caller reads
    // its replies itself, and a thread of the accepting side serves it.
    bool callChannel = false;
    // A SEQPACKET socket (call channels): frames go in packets of at most kPacketSize bytes.
    bool packets = false;
    // A shared connection alongside which no call channel could be opened: calls go over it.
    std::atomic<bool> noChannel{false};
    std::mutex writeMutex;
    WireFormat::FrameReader reader;  // I/O thread only, or a call channel's reading thread
    struct Inbox {
        std::vector<uint8_t> bytes;  // read past the last frame
        size_t start = 0;
        int timeoutMs = 0;  // the receive time-out set on the socket; 0 waits for ever
    };
    Inbox inbox;  // call channels
    // Objects of frames sent on this connection, kept until the peer frees the frame.
    std::map<std::pair<bool, uint64_t>, std::vector<sptr<IRemoteObject>>> pendingFree;
};

struct SocketNode {
    struct Refs {
        int strong = 0;
        int weak = 0;
    };
    struct OneWay {
        std::shared_ptr<SocketConnection> from;
        WireFormat::Frame frame;
        // Counted as work in flight until handled or dropped.
        std::optional<WorkTracker::Token> pending;
    };
    std::weak_ptr<SocketEndpoint> owner;
    int32_t ownerPid = 0;
    const IRemoteObject* object = nullptr;
    RefCounter* counter = nullptr;  // valid while `weak` lives
    wptr<IRemoteObject> weak;
    std::u16string descriptor;
    // Kept while a connection holds the object strongly, or it is published under a name.
    sptr<IRemoteObject> strongHold;
    std::map<const SocketConnection*, Refs> holders;
    int published = 0;      // names it is published under
    int queuedOneWays = 0;  // on their way to the object, which is kept for them
};

struct SocketEndpoint {
    std::weak_ptr<VirtualProcess> session;
    ProcessIdentity identity;
    int listenFd = -1;
    uint64_t listenWatch = 0;
    // Where call channels are opened: RUNDIR/sock/<emulated pid>.calls, a SEQPACKET socket.
    int callsFd = -1;
    uint64_t callsWatch = 0;
    bool closed = false;
    std::set<std::shared_ptr<SocketConnection>> connections;
    // The connection requests to a peer go on: the first one established.
    std::map<int32_t, std::shared_ptr<SocketConnection>> peers;
    // Connections to well-known names, by name.
    std::map<std::string, std::weak_ptr<SocketConnection>> namedConnections;
};

// An object published under a well-known name: its owner listens at RUNDIR/<name>.
struct NamedBinding {
    std::weak_ptr<SocketEndpoint> endpoint;
    uint64_t cookie = 0;
    int fd = -1;
    uint64_t watch = 0;
};

struct SocketHandle {
    std::weak_ptr<SocketEndpoint> holder;
    const SocketEndpoint* holderKey = nullptr;
    std::shared_ptr<SocketConnection> connection;
    int32_t owner = 0;
    uint64_t cookie = 0;
    std::u16string descriptor;
    wptr<IPCObjectProxy> proxy;
    bool dead = false;
};

class SocketTransport::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(SocketTransport::Options options);
    ~Impl();
    void Start();
    void Stop();

    // Endpoints and connections (socket_endpoints.cpp).
    std::shared_ptr<SocketEndpoint> EndpointOf(const std::shared_ptr<VirtualProcess>& session);
    std::shared_ptr<SocketEndpoint> OpenEndpoint(const std::shared_ptr<VirtualProcess>& session);
    std::shared_ptr<SocketEndpoint> LocalEndpoint(int32_t pid);
    std::shared_ptr<SocketConnection> ConnectionTo(const std::shared_ptr<SocketEndpoint>& endpoint, int32_t pid);
    std::shared_ptr<SocketConnection> Connect(const std::shared_ptr<SocketEndpoint>& endpoint, const std::string& path,
                                              int32_t expectedPid, bool callChannel = false);
    std::shared_ptr<SocketConnection> Establish(const std::shared_ptr<SocketEndpoint>& endpoint,
                                                const std::shared_ptr<SocketConnection>& connection,
                                                const ProcessIdentity& peer, bool verified);
    bool Send(const std::shared_ptr<SocketConnection>& connection, const WireFormat::Frame& frame);
    void Drop(const std::shared_ptr<SocketConnection>& connection, const std::string& reason);
    void CloseConnection(const std::shared_ptr<SocketConnection>& connection);
    // The stream from the peer ended: closed at once, or only no longer read until PeerDied().
    void OnEnded(const std::shared_ptr<SocketConnection>& connection);
    void PeerDied(int32_t pid);
    // Under mutex_: whoever waits for an answer on the connection gets ERR_DEAD_OBJECT.
    void WakeWaitersLocked(const SocketConnection& connection);
    void CloseEndpoint(const std::shared_ptr<SocketEndpoint>& endpoint);
    void OnKilled(VirtualProcess& killed);
    void Observe(const SocketEndpoint& endpoint, const SocketConnection& from, const WireFormat::Frame& frame,
                 const std::u16string& descriptor, int status, const MessageParcel& reply);

    // Objects and references (socket_objects.cpp).
    uint64_t CookieFor(const sptr<IRemoteObject>& object, const std::shared_ptr<SocketEndpoint>& owner,
                       int32_t ownerPid);
    void SweepLocked();
    sptr<IRemoteObject> ExistingProxy(const std::shared_ptr<SocketEndpoint>& holder,
                                      const WireFormat::ObjectEntry& entry);
    sptr<IRemoteObject> NewHandle(const std::shared_ptr<SocketEndpoint>& holder,
                                  const std::shared_ptr<SocketConnection>& connection,
                                  const WireFormat::ObjectEntry& entry, bool* extra);
    void SendRelease(const std::shared_ptr<SocketConnection>& connection, uint64_t cookie);
    bool EntryOf(const std::shared_ptr<SocketEndpoint>& sender, const MessageParcel::ObjectEntry& object,
                 WireFormat::ObjectEntry& entry, std::vector<sptr<IRemoteObject>>& holds);
    sptr<IRemoteObject> ProxyFor(const std::shared_ptr<SocketEndpoint>& holder, const WireFormat::ObjectEntry& entry,
                                 int32_t onBehalf, bool* refused);
    sptr<IRemoteObject> Resolve(const std::shared_ptr<SocketEndpoint>& reader, const WireObject& wire);
    bool ToEntries(const std::shared_ptr<SocketEndpoint>& sender, const MessageParcel& parcel,
                   std::vector<WireFormat::ObjectEntry>& entries, std::vector<sptr<IRemoteObject>>& holds);
    bool Receive(const std::shared_ptr<SocketEndpoint>& endpoint, const std::shared_ptr<SocketConnection>& from,
                 WireFormat::Frame& frame, bool isReply, MessageParcel& parcel);
    void ReleaseRefs(uint64_t handle);

    // Requests (socket_requests.cpp).
    int TransactHandle(uint64_t handle, uint32_t code, MessageParcel& data, MessageParcel& reply,
                       MessageOption& option);
    int Call(const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& frame, int waitSeconds,
             WireFormat::Frame* answer);
    void HandleRequest(const std::shared_ptr<SocketEndpoint>& endpoint, const std::shared_ptr<SocketConnection>& from,
                       WireFormat::Frame& frame);
    void OneWayDone(const SocketEndpoint& endpoint, uint64_t cookie);
    void SendReply(const std::shared_ptr<SocketEndpoint>& endpoint, const std::shared_ptr<SocketConnection>& to,
                   uint64_t id, int status, const MessageParcel& reply, Sequencer::Turn resume);
    int SendOneWay(const std::shared_ptr<SocketEndpoint>& holder, const std::shared_ptr<SocketConnection>& connection,
                   WireFormat::Frame& request);
    int SendSync(const std::shared_ptr<SocketEndpoint>& holder, const std::shared_ptr<SocketConnection>& connection,
                 WireFormat::Frame& request, const MessageOption& option, MessageParcel& reply);
    std::optional<WorkTracker::Token> TakeHandedOverLocked(const std::pair<int32_t, uint64_t>& key);
    // Ends the count of a one-way request that will not arrive.
    void DropHandedOver(const std::pair<int32_t, uint64_t>& key);
    void KeepUntilFreed(const std::shared_ptr<SocketConnection>& connection, bool isReply, uint64_t id,
                        std::vector<sptr<IRemoteObject>> holds);
    bool CheckObjectsLocked(const SocketEndpoint& endpoint, const SocketConnection& from,
                            const WireFormat::Frame& frame);
    void AnswerAcquire(const std::shared_ptr<SocketConnection>& to, uint64_t id, bool granted);
    void AnswerContextLookup(const std::shared_ptr<SocketEndpoint>& endpoint,
                             const std::shared_ptr<SocketConnection>& to, uint64_t id);
    sptr<IRemoteObject> LookUpNamed(const std::shared_ptr<SocketEndpoint>& endpoint, const std::string& name);
    bool BindNamed(const std::string& name, const std::shared_ptr<SocketEndpoint>& endpoint, uint64_t cookie);
    void UnbindNamed(const std::string& name);
    // Under mutex_: closes the binding's socket; the object to drop after the lock, if any.
    sptr<IRemoteObject> CloseBindingLocked(const std::string& name, NamedBinding& binding);
    // The bound object's cookie, 0 when the name is not bound in this process.
    uint64_t BoundCookie(const std::string& name);

    // Call channels (socket_channels.cpp).
    std::string CallsPath(int32_t pid) const;
    enum class ChannelRead { FRAME, TIMED_OUT, CLOSED };
    // The calling thread's channel to the peer of `shared`, opened on first use; `shared` itself
    // when none can be had.
    std::shared_ptr<SocketConnection> ChannelFor(const std::shared_ptr<SocketEndpoint>& holder,
                                                 const std::shared_ptr<SocketConnection>& shared);
    int CallOnChannel(const std::shared_ptr<SocketEndpoint>& holder, const std::shared_ptr<SocketConnection>& channel,
                      const WireFormat::Frame& request, int waitSeconds, WireFormat::Frame* answer);
    ChannelRead ReadChannel(const std::shared_ptr<SocketConnection>& channel, WireFormat::Frame& frame, int timeoutMs);
    // A frame other than the awaited reply; false once the channel is dropped.
    bool OnChannelFrame(const std::shared_ptr<SocketEndpoint>& endpoint,
                        const std::shared_ptr<SocketConnection>& channel, WireFormat::Frame& frame);
    bool ServeOnChannel(const std::shared_ptr<SocketEndpoint>& endpoint,
                        const std::shared_ptr<SocketConnection>& channel, WireFormat::Frame& frame);
    // From the I/O thread once the hello is through: a thread of this process serves the channel.
    bool StartServing(const std::shared_ptr<SocketEndpoint>& endpoint,
                      const std::shared_ptr<SocketConnection>& channel);
    void ServeChannel(const std::shared_ptr<SocketEndpoint>& endpoint,
                      const std::shared_ptr<SocketConnection>& channel);

    // The I/O thread (socket_io_thread.cpp).
    void IoLoop();
    void Accept(const std::shared_ptr<SocketEndpoint>& endpoint, int listenFd, const std::string& via);
    void ReadFrom(const std::shared_ptr<SocketConnection>& connection);
    bool OnFrame(const std::shared_ptr<SocketConnection>& connection, WireFormat::Frame& frame);
    bool OnHello(const std::shared_ptr<SocketConnection>& connection, const WireFormat::Frame& frame);
    bool OnRequest(const std::shared_ptr<SocketEndpoint>& endpoint, const std::shared_ptr<SocketConnection>& from,
                   WireFormat::Frame& frame);
    bool OnAcquire(const std::shared_ptr<SocketEndpoint>& endpoint, const std::shared_ptr<SocketConnection>& from,
                   const WireFormat::Frame& frame);
    bool OnRelease(const std::shared_ptr<SocketConnection>& from, const WireFormat::Frame& frame);
    bool OnAnswer(const std::shared_ptr<SocketConnection>& from, WireFormat::Frame& frame);
    void OnFree(const std::shared_ptr<SocketConnection>& from, const WireFormat::Frame& frame);
    // Under mutex_.
    // Answers that run none of a process's code (acquire results, context lookups) go out on a
    // thread of the transport's own: in virtual time they must not wait for a turn, since whoever
    // asked may hold the baton while it waits for them.
    void PostAnswer(std::function<void()> work);
    void AnswerLoop();
    // With a turn the frame carried (virtual time), the work runs in that turn.
    bool PostTo(const std::shared_ptr<SocketEndpoint>& endpoint, std::function<void()> work,
                Sequencer::Turn turn = Sequencer::kNoTurn);
    bool PostToLane(const std::shared_ptr<SocketEndpoint>& endpoint, uint64_t cookie,
                    const std::shared_ptr<SocketNode::OneWay>& request, Sequencer::Turn turn);
    // Under mutex_.
    uint64_t Watch(int fd, std::shared_ptr<SocketEndpoint> endpoint, std::shared_ptr<SocketConnection> connection,
                   std::string via = {});
    void Unwatch(uint64_t watchId, int fd);

    // Under mutex_.
    bool StrongHeldLocked(const SocketNode& node) const;
    bool PeerHoldsLocked(const SocketNode& node, int32_t peerPid) const;
    bool PendingLocked(const SocketEndpoint& endpoint, int32_t peerPid, const IRemoteObject* object) const;
    SocketNode* OwnNodeLocked(const SocketEndpoint& endpoint, uint64_t cookie);
    ProcessIdentity IdentityOf(pid_t realPid, uid_t realUid, int32_t claimed, bool* verified);

    struct Waiter {
        const SocketConnection* connection = nullptr;
        bool done = false;
        int status = 0;
        WireFormat::Frame answer;
        std::condition_variable woken;
    };
    struct Watched {
        std::shared_ptr<SocketEndpoint> endpoint;
        std::shared_ptr<SocketConnection> connection;
        int listenFd = -1;
        std::string via;
    };

    const SocketTransport::Options options_;
    ProcessRegistry registry_;
    std::mutex mutex_;
    std::unordered_map<const VirtualProcess*, std::shared_ptr<SocketEndpoint>> endpoints_;
    std::unordered_map<uint64_t, SocketNode> nodes_;
    std::unordered_map<const IRemoteObject*, uint64_t> cookies_;
    std::unordered_map<uint64_t, SocketHandle> handles_;
    std::map<std::tuple<const SocketEndpoint*, int32_t, uint64_t>, uint64_t> handleIndex_;
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> waiters_;
    std::unordered_map<uint64_t, Watched> watched_;
    TransportControls controls_;
    // One-way requests between sessions of this process, counted as work from the moment they are
    // written until the receiver queues them: by (sender pid, frame id).
    std::map<std::pair<int32_t, uint64_t>, WorkTracker::Token> handedOver_;
    std::map<std::string, NamedBinding> named_;
    size_t servingChannels_ = 0;  // under mutex_
    std::atomic<bool> deathsWhenTold_{false};
    uint64_t nextCookie_ = 1;
    uint64_t nextHandle_ = 1;
    uint64_t nextId_ = 1;
    uint64_t nextWatch_ = 1;
    size_t sweepAt_ = 64;
    int epollFd_ = -1;
    int wakeFd_ = -1;
    std::thread ioThread_;
    struct QueuedAnswer {
        std::function<void()> work;
        std::optional<WorkTracker::Token> pending;
    };
    std::mutex answersMutex_;
    std::condition_variable answersReady_;
    std::deque<QueuedAnswer> answers_;
    bool answersStopping_ = false;
    std::thread answerThread_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_SOCKET_TRANSPORT_IMPL_H
