// Real child processes talking to this one. The binary runs as a child when ZEL_SOCKET_CHILD names
// a role; a child waits on the gate (fd kGateFd) until the parent has registered it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "hilog.h"
#include "ipc_skeleton.h"
#include "ipc_test_support.h"
#include "ipc_types.h"
#include "process_registry.h"
#include "socket_test_support.h"
#include "wire_frame.h"

namespace Tarvo {
namespace {
using namespace IpcTest;

constexpr int kGateFd = 100;
constexpr int32_t kServicePid = 5000;
constexpr int32_t kFloodCount = 3000;

enum Code : uint32_t { IDENTITY = 1, NOTE = 2, GIVE = 4, TAKE = 5 };

ProcessIdentity ChildIdentity(int32_t pid)
{
    return {pid, pid + 10000, 0x20000000u + static_cast<uint32_t>(pid), static_cast<uint64_t>(pid) << 8, "child"};
}

// ---- The children ----

int32_t EnvInt(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::atoi(value) : 0;
}

sptr<IRemoteObject> ServiceFromChild()
{
    return IPCSkeleton::GetContextObject();
}

int RunHostile(const std::string& runDir)
{
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof(address.sun_path), "%s/sock/%d", runDir.c_str(), kServicePid);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return 2;
    }
    std::vector<uint8_t> bytes = WireFormat::Encode({WireFormat::HELLO, 0, 0, 0, 0, 6666, 0, {}, {}});
    std::vector<uint8_t> bad(WireFormat::kHeaderSize, 0xee);
    bytes.insert(bytes.end(), bad.begin(), bad.end());
    send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    char sink[256];
    while (recv(fd, sink, sizeof(sink), 0) > 0) {
    }
    return 0;
}

int RunRole(const std::string& role)
{
    std::shared_ptr<VirtualProcess> self = MakeProcess(EnvInt("ZEL_CHILD_PID"), "child");
    ScopedProcess scope(self);
    sptr<IRemoteObject> service = ServiceFromChild();
    if (service == nullptr) {
        return 3;
    }
    if (role == "identity") {
        return Call(service, IDENTITY, 0) == 0 ? 0 : 4;
    }
    if (role == "flood") {
        for (int32_t i = 0; i < kFloodCount; ++i) {
            if (Call(service, NOTE, i, nullptr, MessageOption::TF_ASYNC) != 0) {
                return 5;
            }
        }
        return 0;
    }
    if (role == "give" || role == "perish") {
        // The perishing child's callback dies in the middle of the first request it gets.
        FunctionStub::Handler handler = nullptr;
        if (role == "perish") {
            handler = [](uint32_t, MessageParcel&, MessageParcel&, MessageOption&) -> int { _exit(0); };
        }
        sptr<FunctionStub> callback = MakeStub(self, u"test.ChildCallback", handler);
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        data.WriteRemoteObject(callback);
        service->SendRequest(GIVE, data, reply, option);
        char byte;
        while (read(kGateFd, &byte, 1) != 0) {
        }
        return 0;
    }
    if (role == "take") {
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        service->SendRequest(TAKE, data, reply, option);
        sptr<IRemoteObject> taken = reply.ReadRemoteObject();
        // Leaves holding it: the exit must release it.
        _exit(taken != nullptr && taken->IsProxyObject() ? 0 : 6);
    }
    return 7;
}

int RunChild(const std::string& role)
{
    char byte;
    while (read(kGateFd, &byte, 1) < 0 && errno == EINTR) {
    }
    std::string runDir = std::getenv("ZEL_RUN_DIR");
    if (role == "hostile") {
        _exit(RunHostile(runDir));
    }
    HiviewDFX::HiLogOutput::SetStderrEnabled(false);
    IPCTransport::Install(new SocketTransport({runDir}));
    int status = RunRole(role);
    _exit(status);
}

// ---- The parent ----

class Notes {
public:
    void Add(int32_t key, int32_t value)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        notes_[key].push_back(value);
        ++total_;
        changed_.notify_all();
    }
    bool WaitTotal(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, kTimeout, [&] { return total_ >= count; });
    }
    std::map<int32_t, std::vector<int32_t>> Get()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return notes_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<int32_t, std::vector<int32_t>> notes_;
    size_t total_ = 0;
};

class Mortal : public FunctionStub {
public:
    Mortal(Notes& notes) : FunctionStub(u"test.Mortal", nullptr), notes_(notes) {}
    ~Mortal() override { notes_.Add(0, 1); }

private:
    Notes& notes_;
};

class Recipient : public IRemoteObject::DeathRecipient {
public:
    explicit Recipient(Notes& notes) : notes_(notes) {}
    void OnRemoteDied(const wptr<IRemoteObject>&) override { notes_.Add(-1, VirtualProcess::Current()->Pid()); }

private:
    Notes& notes_;
};

class SocketMultiProcessTest : public testing::Test {
protected:
    void SetUp() override
    {
        SocketTest::Transport();
        std::string error;
        ASSERT_TRUE(registry_.Register(getpid(), {service_->Identity()}, &error)) << error;
        stub_ = MakeStub(service_, u"test.Service",
                         [this](uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&) {
                             return Handle(code, data, reply);
                         });
        ScopedProcess scope(service_);
        ASSERT_TRUE(IPCSkeleton::SetContextObject(stub_));
    }
    void TearDown() override
    {
        SocketTest::Transport().SetDeathsWhenTold(false);
        for (pid_t child : children_) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            registry_.Unregister(child);
        }
        registry_.Unregister(getpid());
    }

    int Handle(uint32_t code, MessageParcel& data, MessageParcel& reply)
    {
        switch (code) {
            case IDENTITY:
                identities_.Add(IPCSkeleton::GetCallingPid(), IPCSkeleton::GetCallingUid());
                identities_.Add(IPCSkeleton::GetCallingPid(), static_cast<int32_t>(IPCSkeleton::GetCallingTokenID()));
                return 0;
            case NOTE:
                notes_.Add(IPCSkeleton::GetCallingPid(), data.ReadInt32());
                return 0;
            case GIVE: {
                given_ = data.ReadRemoteObject();
                bool watched = given_ != nullptr && given_->AddDeathRecipient(new Recipient(deaths_));
                handed_.Add(0, watched ? 1 : 0);
                return 0;
            }
            case TAKE:
                reply.WriteRemoteObject(sptr<IRemoteObject>(new Mortal(deaths_)));
                return 0;
            default:
                return -1;
        }
    }

    // Starts the binary as a child in `role`, registered as `registered` before it goes on.
    pid_t Spawn(const std::string& role, int32_t actsAs, std::vector<ProcessIdentity> registered)
    {
        std::vector<std::string> env = {"ZEL_SOCKET_CHILD=" + role, "ZEL_RUN_DIR=" + SocketTest::RunDir(),
                                        "ZEL_CHILD_PID=" + std::to_string(actsAs)};
        std::vector<char*> envp;
        for (std::string& entry : env) {
            envp.push_back(entry.data());
        }
        envp.push_back(nullptr);
        char exe[] = "/proc/self/exe";
        char* argv[] = {exe, nullptr};
        int gate[2];
        if (pipe2(gate, O_CLOEXEC) != 0) {
            return -1;
        }
        pid_t pid = fork();
        if (pid == 0) {
            dup2(gate[0], kGateFd);
            execve(exe, argv, envp.data());
            _exit(127);
        }
        close(gate[0]);
        children_.push_back(pid);
        std::string error;
        EXPECT_TRUE(registered.empty() || registry_.Register(pid, registered, &error)) << error;
        gates_[pid] = gate[1];
        [[maybe_unused]] ssize_t opened = write(gate[1], "g", 1);
        return pid;
    }
    int WaitExit(pid_t pid)
    {
        int status = 0;
        waitpid(pid, &status, 0);
        std::erase(children_, pid);
        close(gates_[pid]);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    ProcessRegistry registry_{SocketTest::RunDir() + "/registry"};
    std::shared_ptr<VirtualProcess> service_ = MakeProcess(kServicePid, "service");
    sptr<FunctionStub> stub_;
    std::vector<pid_t> children_;
    std::map<pid_t, int> gates_;
    Notes identities_;
    Notes notes_;
    Notes deaths_;
    Notes handed_;
    sptr<IRemoteObject> given_;
};

TEST_F(SocketMultiProcessTest, CallersAreWhoTheRegistrySaysWhateverTheyClaim)
{
    pid_t honest = Spawn("identity", 6001, {ChildIdentity(6001)});
    pid_t pretender = Spawn("identity", 6002, {ChildIdentity(6003)});
    EXPECT_EQ(WaitExit(honest), 0);
    EXPECT_EQ(WaitExit(pretender), 0);
    std::map<int32_t, std::vector<int32_t>> seen = identities_.Get();
    ProcessIdentity expected = ChildIdentity(6001);
    EXPECT_EQ(seen[6001], (std::vector<int32_t>{expected.uid, static_cast<int32_t>(expected.tokenId)}));
    EXPECT_EQ(seen[pretender], (std::vector<int32_t>{static_cast<int32_t>(getuid()), 0}));
    EXPECT_EQ(seen.count(6002), 0u);
}

TEST_F(SocketMultiProcessTest, OneWayRequestsKeepEachSendersOrderUnderLoad)
{
    pid_t first = Spawn("flood", 6011, {ChildIdentity(6011)});
    pid_t second = Spawn("flood", 6012, {ChildIdentity(6012)});
    ASSERT_TRUE(notes_.WaitTotal(2 * kFloodCount));
    EXPECT_EQ(WaitExit(first), 0);
    EXPECT_EQ(WaitExit(second), 0);
    std::vector<int32_t> expected;
    for (int32_t i = 0; i < kFloodCount; ++i) {
        expected.push_back(i);
    }
    std::map<int32_t, std::vector<int32_t>> seen = notes_.Get();
    EXPECT_EQ(seen[6011], expected);
    EXPECT_EQ(seen[6012], expected);
}

TEST_F(SocketMultiProcessTest, KilledChildsObjectsDieAtOnceInTheHolder)
{
    pid_t child = Spawn("give", 6021, {ChildIdentity(6021)});
    ASSERT_TRUE(handed_.WaitTotal(1));
    EXPECT_EQ(handed_.Get()[0], std::vector<int32_t>{1});
    kill(child, SIGKILL);
    EXPECT_EQ(WaitExit(child), 128 + SIGKILL);
    ASSERT_TRUE(deaths_.WaitTotal(1));
    EXPECT_EQ(deaths_.Get()[-1], std::vector<int32_t>{kServicePid});
    ASSERT_NE(given_, nullptr);
    EXPECT_TRUE(given_->IsObjectDead());
    EXPECT_EQ(Call(given_, PING_TRANSACTION, 0), ERR_DEAD_OBJECT);
}

TEST_F(SocketMultiProcessTest, CallerOfAChildThatDiesMidCallIsWokenByTheDeath)
{
    pid_t child = Spawn("perish", 6061, {ChildIdentity(6061)});
    ASSERT_TRUE(handed_.WaitTotal(1));
    ASSERT_NE(given_, nullptr);
    {
        // A wait far longer than the test's: only the death can end it in time.
        ScopedProcess scope(service_);
        EXPECT_EQ(Call(given_, 1, 0, nullptr, MessageOption::TF_SYNC, 600), ERR_DEAD_OBJECT);
    }
    EXPECT_EQ(WaitExit(child), 0);
    ASSERT_TRUE(deaths_.WaitTotal(1));
    EXPECT_EQ(deaths_.Get()[-1], std::vector<int32_t>{kServicePid});
    EXPECT_TRUE(given_->IsObjectDead());
}

// In virtual time the device says when a death is heard, so it is heard at the same point on every
// run: until then the connection's end changes nothing.
TEST_F(SocketMultiProcessTest, WithDeathsToldAKilledChildsObjectsDieWhenTheDeviceSays)
{
    SocketTest::Transport().SetDeathsWhenTold(true);
    pid_t child = Spawn("give", 6051, {ChildIdentity(6051)});
    ASSERT_TRUE(handed_.WaitTotal(1));
    kill(child, SIGKILL);
    EXPECT_EQ(WaitExit(child), 128 + SIGKILL);
    ASSERT_NE(given_, nullptr);
    EXPECT_FALSE(given_->IsObjectDead());
    EXPECT_TRUE(deaths_.Get().empty());
    SocketTest::Transport().PeerDied(6051);
    EXPECT_TRUE(given_->IsObjectDead());
    ASSERT_TRUE(deaths_.WaitTotal(1));
    EXPECT_EQ(deaths_.Get()[-1], std::vector<int32_t>{kServicePid});
    EXPECT_EQ(Call(given_, PING_TRANSACTION, 0), ERR_DEAD_OBJECT);
}

TEST_F(SocketMultiProcessTest, ExitingHolderReleasesWhatItHeld)
{
    pid_t child = Spawn("take", 6031, {ChildIdentity(6031)});
    EXPECT_EQ(WaitExit(child), 0);
    // The stub's last holder was the child: it goes when the child does.
    ASSERT_TRUE(deaths_.WaitTotal(1));
    EXPECT_EQ(deaths_.Get()[0], std::vector<int32_t>{1});
}

TEST_F(SocketMultiProcessTest, HostileChildIsDroppedWhileAGoodOneIsServed)
{
    HiviewDFX::LogCapture capture;
    pid_t hostile = Spawn("hostile", 0, {});
    pid_t good = Spawn("flood", 6041, {ChildIdentity(6041)});
    EXPECT_EQ(WaitExit(hostile), 0);
    ASSERT_TRUE(notes_.WaitTotal(kFloodCount));
    EXPECT_EQ(WaitExit(good), 0);
    std::vector<std::string> errors = capture.Messages(HiviewDFX::LOG_ERROR);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], "dropping peer pid " + std::to_string(hostile) + " (real pid " + std::to_string(hostile) +
                             "): bad magic");
}

}  // namespace
}  // namespace Tarvo

int main(int argc, char** argv)
{
    if (const char* role = std::getenv("ZEL_SOCKET_CHILD")) {
        return Tarvo::RunChild(role);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
