#include "socket_transport.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "hilog.h"
#include "ipc_object_proxy.h"
#include "ipc_skeleton.h"
#include "ipc_test_support.h"
#include "ipc_types.h"
#include "socket_test_support.h"
#include "wire_frame.h"

namespace Tarvo {
namespace {
using namespace IpcTest;

class Latch {
public:
    void Note(int32_t value)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        values_.push_back(value);
        changed_.notify_all();
    }
    std::vector<int32_t> WaitFor(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, kTimeout, [&] { return values_.size() >= count; });
        return values_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int32_t> values_;
};

class Recipient : public IRemoteObject::DeathRecipient {
public:
    explicit Recipient(Latch& latch) : latch_(latch) {}
    void OnRemoteDied(const wptr<IRemoteObject>&) override { latch_.Note(VirtualProcess::Current()->Pid()); }

private:
    Latch& latch_;
};

class SocketTransportTest : public testing::Test {
protected:
    void SetUp() override { SocketTest::Transport(); }

    std::shared_ptr<VirtualProcess> service_ = MakeProcess(3001, "service");
    std::shared_ptr<VirtualProcess> client_ = MakeProcess(3002, "client");
    std::shared_ptr<VirtualProcess> third_ = MakeProcess(3003, "third");
};

TEST_F(SocketTransportTest, RequestRunsInTheOwnerWithTheCallersIdentityAndTag)
{
    sptr<FunctionStub> stub =
        MakeStub(service_, u"test.Echo", [](uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) {
            reply.WriteInt32(data.ReadInt32() * 2);
            reply.WriteInt32(IPCSkeleton::GetCallingPid());
            reply.WriteInt32(IPCSkeleton::GetCallingUid());
            reply.WriteInt32(VirtualProcess::Current()->Pid());
            reply.WriteUint64(IPCTransport::CurrentTag());
            return 5;
        });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ASSERT_NE(proxy, nullptr);
    ASSERT_TRUE(proxy->IsProxyObject());
    EXPECT_EQ(Transfer(stub, client_), proxy);
    ScopedProcess scope(client_);
    IPCTransport::ScopedTag tag(77);
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    data.WriteInt32(21);
    ASSERT_EQ(proxy->SendRequest(1, data, reply, option), 5);
    EXPECT_EQ(reply.ReadInt32(), 42);
    EXPECT_EQ(reply.ReadInt32(), 3002);
    EXPECT_EQ(reply.ReadInt32(), 13002);
    EXPECT_EQ(reply.ReadInt32(), 3001);
    EXPECT_EQ(reply.ReadUint64(), 77u);
}

TEST_F(SocketTransportTest, ObjectsTravelAsReferencesAndComeHomeAsThemselves)
{
    sptr<FunctionStub> callback =
        MakeStub(client_, u"test.Callback", [](uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) {
            reply.WriteInt32(data.ReadInt32() + 1);
            reply.WriteInt32(IPCSkeleton::GetCallingPid());
            return 0;
        });
    // The service calls the callback it was given, inside the client's request, and hands it back.
    sptr<FunctionStub> relay =
        MakeStub(service_, u"test.Relay", [](uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) {
            sptr<IRemoteObject> object = data.ReadRemoteObject();
            int32_t answer = 0;
            int status = object == nullptr ? -1 : Call(object, 1, 10, &answer);
            reply.WriteInt32(status);
            reply.WriteInt32(answer);
            reply.WriteRemoteObject(object);
            return 0;
        });
    sptr<IRemoteObject> proxy = Transfer(relay, client_);
    ScopedProcess scope(client_);
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    ASSERT_TRUE(data.WriteRemoteObject(callback));
    ASSERT_EQ(proxy->SendRequest(1, data, reply, option), 0);
    EXPECT_EQ(reply.ReadInt32(), 0);
    EXPECT_EQ(reply.ReadInt32(), 11);
    EXPECT_EQ(reply.ReadRemoteObject(), sptr<IRemoteObject>(callback));
}

// Binder's thread affinity: a call back into a caller that waits on its own call runs on the
// waiting thread, and so on back and forth, however deep.
TEST_F(SocketTransportTest, CallsBackIntoAWaitingCallerRunOnTheWaitingThread)
{
    struct Turn {
        int32_t runsIn;
        int32_t caller;
        std::thread::id thread;
        int32_t depth;
    };
    std::mutex mutex;
    std::vector<Turn> turns;
    auto note = [&](int32_t depth) {
        std::lock_guard<std::mutex> lock(mutex);
        turns.push_back(
            {VirtualProcess::Current()->Pid(), IPCSkeleton::GetCallingPid(), std::this_thread::get_id(), depth});
    };
    sptr<IRemoteObject> relayInClient;
    sptr<IRemoteObject> callbackInService;
    sptr<FunctionStub> callback =
        MakeStub(client_, u"test.Callback", [&](uint32_t, MessageParcel& data, MessageParcel&, MessageOption&) {
            int32_t depth = data.ReadInt32();
            note(depth);
            return depth == 0 ? 0 : Call(relayInClient, 1, depth - 1);
        });
    sptr<FunctionStub> relay =
        MakeStub(service_, u"test.Relay", [&](uint32_t, MessageParcel& data, MessageParcel&, MessageOption&) {
            int32_t depth = data.ReadInt32();
            note(depth);
            return Call(callbackInService, 1, depth);
        });
    relayInClient = Transfer(relay, client_);
    callbackInService = Transfer(callback, service_);
    ScopedProcess scope(client_);
    ASSERT_EQ(Call(relayInClient, 1, 2), 0);
    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(turns.size(), 6u);
    const std::thread::id served = turns[0].thread;
    EXPECT_NE(served, std::this_thread::get_id());
    for (size_t i = 0; i < turns.size(); ++i) {
        const bool inService = i % 2 == 0;
        EXPECT_EQ(turns[i].depth, 2 - static_cast<int32_t>(i / 2)) << i;
        EXPECT_EQ(turns[i].runsIn, inService ? 3001 : 3002) << i;
        EXPECT_EQ(turns[i].caller, inService ? 3002 : 3001) << i;
        EXPECT_EQ(turns[i].thread, inService ? served : std::this_thread::get_id()) << i;
    }
}

TEST_F(SocketTransportTest, OneWayRequestsToAnObjectArriveInOrder)
{
    Latch latch;
    sptr<FunctionStub> stub =
        MakeStub(service_, u"test.Sink", [&latch](uint32_t, MessageParcel& data, MessageParcel&, MessageOption&) {
            latch.Note(data.ReadInt32());
            return 0;
        });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ScopedProcess scope(client_);
    std::vector<int32_t> sent;
    for (int32_t i = 0; i < 500; ++i) {
        ASSERT_EQ(Call(proxy, 1, i, nullptr, MessageOption::TF_ASYNC), 0);
        sent.push_back(i);
    }
    EXPECT_EQ(latch.WaitFor(sent.size()), sent);
}

TEST_F(SocketTransportTest, KilledOwnerFailsRequestsAndTellsRecipientsInTheHolder)
{
    Latch died;
    sptr<FunctionStub> stub = MakeStub(service_, u"test.Mortal");
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ASSERT_TRUE(proxy->AddDeathRecipient(new Recipient(died)));
    service_->Kill();
    EXPECT_TRUE(proxy->IsObjectDead());
    EXPECT_EQ(died.WaitFor(1), std::vector<int32_t>{3002});
    ScopedProcess scope(client_);
    EXPECT_EQ(Call(proxy, 1, 0), ERR_DEAD_OBJECT);
    EXPECT_FALSE(proxy->AddDeathRecipient(new Recipient(died)));
    sptr<IRemoteObject> late = Transfer(stub, third_);
    ASSERT_NE(late, nullptr);
    EXPECT_TRUE(late->IsObjectDead());
}

TEST_F(SocketTransportTest, FaultsObserverAndTimeOut)
{
    std::mutex mutex;
    std::vector<TransactionRecord> seen;
    SocketTest::Transport().SetTransactionObserver([&](const TransactionRecord& record) {
        std::lock_guard<std::mutex> lock(mutex);
        seen.push_back(record);
    });
    // Shared with the handler, which outlives the test's wait.
    auto gate = std::make_shared<std::mutex>();
    gate->lock();
    sptr<FunctionStub> stub =
        MakeStub(service_, u"test.Slow", [gate](uint32_t code, MessageParcel&, MessageParcel&, MessageOption&) {
            if (code == 9) {
                std::lock_guard<std::mutex> wait(*gate);
            }
            return 3;
        });
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    ScopedProcess scope(client_);
    SocketTest::Transport().SetTransportFault(3001, true);
    EXPECT_EQ(Call(proxy, 1, 0), ERR_TRANSACTION_FAILED);
    SocketTest::Transport().SetTransportFault(3001, false);
    {
        IPCTransport::ScopedTag tag(5);
        EXPECT_EQ(Call(proxy, 2, 0), 3);
    }
    EXPECT_EQ(Call(proxy, 9, 0, nullptr, MessageOption::TF_SYNC, 1), ERR_TIMED_OUT);
    SocketTest::Transport().SetTransactionObserver(nullptr);
    gate->unlock();
    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_GE(seen.size(), 1u);
    EXPECT_EQ(seen[0].descriptor, u"test.Slow");
    EXPECT_EQ(seen[0].code, 2u);
    EXPECT_EQ(seen[0].status, 3);
    EXPECT_EQ(seen[0].callerPid, 3002);
    EXPECT_EQ(seen[0].targetPid, 3001);
    EXPECT_EQ(seen[0].tag, 5u);
}

TEST_F(SocketTransportTest, ContextObjectIsSeenFromEachSession)
{
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
    sptr<FunctionStub> manager = MakeStub(service_, u"test.Manager");
    {
        ScopedProcess scope(service_);
        ASSERT_TRUE(IPCSkeleton::SetContextObject(manager));
        EXPECT_EQ(IPCSkeleton::GetContextObject(), sptr<IRemoteObject>(manager));
    }
    sptr<IRemoteObject> seen;
    {
        ScopedProcess scope(client_);
        seen = IPCSkeleton::GetContextObject();
    }
    ASSERT_NE(seen, nullptr);
    EXPECT_TRUE(seen->IsProxyObject());
    EXPECT_EQ(Call(seen, PING_TRANSACTION, 0), 0);
    EXPECT_TRUE(IPCSkeleton::SetContextObject(nullptr));
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
    ASSERT_TRUE(IPCSkeleton::SetContextObject(seen));
    service_->Kill();
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
}

TEST_F(SocketTransportTest, NamedObjectsStandBesideTheContextObject)
{
    auto& transport = static_cast<SocketTransport&>(IPCTransport::Get());
    sptr<FunctionStub> hub = MakeStub(service_, u"test.Hub");
    sptr<FunctionStub> manager = MakeStub(third_, u"test.Manager");
    for (const std::string& bad :
         std::vector<std::string>{"", "sock", "registry", "lock", "Hub", "a/b", std::string(33, 'a')}) {
        EXPECT_FALSE(transport.PublishNamed(bad, hub)) << bad;
    }
    ASSERT_TRUE(transport.PublishNamed("hub", hub));
    {
        ScopedProcess scope(third_);
        ASSERT_TRUE(IPCSkeleton::SetContextObject(manager));
    }
    ScopedProcess scope(client_);
    sptr<IRemoteObject> seenHub = transport.GetNamed("hub");
    ASSERT_NE(seenHub, nullptr);
    EXPECT_EQ(seenHub->GetObjectDescriptor(), u"test.Hub");
    EXPECT_EQ(transport.GetNamed("samgr")->GetObjectDescriptor(), u"test.Manager");
    EXPECT_EQ(transport.GetNamed("nothing"), nullptr);
    // Withdrawing the context object leaves other names alone.
    EXPECT_TRUE(IPCSkeleton::SetContextObject(nullptr));
    EXPECT_EQ(IPCSkeleton::GetContextObject(), nullptr);
    EXPECT_NE(transport.GetNamed("hub"), nullptr);
    EXPECT_TRUE(transport.PublishNamed("hub", nullptr));
    EXPECT_EQ(transport.GetNamed("hub"), nullptr);
}

int ConnectAt(const std::string& path, int type)
{
    int fd = socket(AF_UNIX, type, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof(address.sun_path), "%s", path.c_str());
    return connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 ? fd : -1;
}

// Reads until the transport hangs up, then checks that it logged exactly that drop and still serves.
void ExpectDroppedAlone(int fd, HiviewDFX::LogCapture& capture, const sptr<IRemoteObject>& proxy,
                        const std::shared_ptr<VirtualProcess>& caller, const std::string& reason)
{
    char sink[256];
    while (recv(fd, sink, sizeof(sink), 0) > 0) {
    }
    close(fd);
    ScopedProcess scope(caller);
    EXPECT_EQ(Call(proxy, PING_TRANSACTION, 0), 0) << reason;
    std::vector<std::string> errors = capture.Messages(HiviewDFX::LOG_ERROR);
    ASSERT_EQ(errors.size(), 1u) << reason;
    EXPECT_EQ(errors[0], "dropping peer pid " + std::to_string(getpid()) + " (real pid " + std::to_string(getpid()) +
                             "): " + reason);
}

// A peer breaking the format is dropped with one line; others go on being served.
TEST_F(SocketTransportTest, MalformedStreamsDropOnlyThatPeer)
{
    sptr<FunctionStub> stub = MakeStub(service_, u"test.Target");
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    std::string path = SocketTest::RunDir() + "/sock/3001";
    auto hello = WireFormat::Encode({WireFormat::HELLO, 0, 0, 0, 0, 9999, 0, {}, {}});
    WireFormat::Frame unheld{WireFormat::REQUEST, 0, 1, 1, 0, 1, 0, {}, {}};
    struct Case {
        std::vector<uint8_t> bytes;
        const char* reason;
    };
    std::vector<uint8_t> truncated = WireFormat::Encode(unheld);
    truncated.resize(20);
    std::vector<uint8_t> oversize = WireFormat::Encode(unheld);
    oversize[48] = 0xff, oversize[49] = 0xff, oversize[50] = 0x1f;  // the data size
    const Case cases[] = {
        {WireFormat::Encode(unheld), "request naming an object it does not hold"},
        {truncated, "stream ended inside a frame"},
        {oversize, "frame over the size limit"},
        {WireFormat::Encode({WireFormat::REQUEST, 0, 0, 0, 0, 0, 0, {}, {}}), "frame before hello"},
    };
    for (const Case& c : cases) {
        HiviewDFX::LogCapture capture;
        int fd = ConnectAt(path, SOCK_STREAM);
        ASSERT_GE(fd, 0);
        std::vector<uint8_t> bytes = c.reason == std::string("frame before hello") ? c.bytes : hello;
        if (bytes != c.bytes) {
            bytes.insert(bytes.end(), c.bytes.begin(), c.bytes.end());
        }
        ASSERT_EQ(send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
        shutdown(fd, SHUT_WR);
        ExpectDroppedAlone(fd, capture, proxy, client_, c.reason);
    }
}

// Call channels are opened at the packet socket and only there; what breaks their rules drops
// that channel alone, with one line.
TEST_F(SocketTransportTest, CallChannelsBreakingTheirRulesAreDroppedAlone)
{
    sptr<FunctionStub> stub = MakeStub(service_, u"test.Target");
    sptr<IRemoteObject> proxy = Transfer(stub, client_);
    const std::string path = SocketTest::RunDir() + "/sock/3001";
    std::vector<uint8_t> plain = WireFormat::Encode({WireFormat::HELLO, 0, 0, 0, 0, 9999, 0, {}, {}});
    std::vector<uint8_t> calls =
        WireFormat::Encode({WireFormat::HELLO, WireFormat::FLAG_CALLS, 0, 0, 0, 9999, 0, {}, {}});
    struct Case {
        int type;
        std::vector<std::vector<uint8_t>> packets;
        const char* reason;
    };
    const Case cases[] = {
        {SOCK_STREAM, {calls}, "hello of the wrong kind for its socket"},
        {SOCK_SEQPACKET, {plain}, "hello of the wrong kind for its socket"},
        {SOCK_SEQPACKET, {calls, std::vector<uint8_t>(70000, 0)}, "packet over the size limit"},
        {SOCK_SEQPACKET,
         {calls, WireFormat::Encode({WireFormat::REQUEST, 0, 1, 1, 0, 1, 0, {}, {}})},
         "request naming an object it does not hold"},
        {SOCK_SEQPACKET,
         {calls, WireFormat::Encode({WireFormat::ACQUIRE, 0, 0, 1, 0, 1, 0, {}, {}})},
         "frame of type 4 on a call channel"},
    };
    for (const Case& c : cases) {
        HiviewDFX::LogCapture capture;
        int fd = ConnectAt(path + (c.type == SOCK_SEQPACKET ? ".calls" : ""), c.type);
        ASSERT_GE(fd, 0);
        for (const std::vector<uint8_t>& packet : c.packets) {
            ASSERT_EQ(send(fd, packet.data(), packet.size(), MSG_NOSIGNAL), static_cast<ssize_t>(packet.size()));
        }
        ExpectDroppedAlone(fd, capture, proxy, client_, c.reason);
    }
}

}  // namespace
}  // namespace Tarvo
