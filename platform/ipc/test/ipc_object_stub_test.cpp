#include "ipc_object_stub.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "ipc_test_support.h"
#include "ipc_types.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
using namespace IpcTest;
using Bytes = std::vector<uint8_t>;

class IpcObjectStubTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout)); }

    std::shared_ptr<VirtualProcess> owner_ = MakeProcess(500, "owner");
    std::shared_ptr<VirtualProcess> caller_ = MakeProcess(501, "caller");
};

TEST_F(IpcObjectStubTest, DefaultHandlerAnswersPingAndDescriptorOnly)
{
    sptr<IPCObjectStub> stub;
    {
        ScopedProcess scope(owner_);
        stub = new IPCObjectStub(u"T.x");
    }
    sptr<IRemoteObject> proxy = Transfer(stub, caller_);
    ScopedProcess scope(caller_);
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    EXPECT_EQ(proxy->SendRequest(PING_TRANSACTION, data, reply, option), ERR_NONE);
    EXPECT_EQ(reply.GetDataSize(), 0u);
    EXPECT_EQ(proxy->SendRequest(INTERFACE_TRANSACTION, data, reply, option), ERR_NONE);
    EXPECT_EQ(Bytes(reply.GetData(), reply.GetData() + reply.GetDataSize()),
              (Bytes{0x03, 0, 0, 0, 'T', 0, '.', 0, 'x', 0, 0, 0}));
    EXPECT_EQ(proxy->SendRequest(1234, data, reply, option), IPC_STUB_UNKNOW_TRANS_ERR);
    EXPECT_EQ(PING_TRANSACTION, 0x5F504E47u);
    EXPECT_EQ(INTERFACE_TRANSACTION, 0x5F4E5446u);
}

// Writes its arguments back, one per line, and answers with their count.
class DumpingStub : public IPCObjectStub {
public:
    DumpingStub() : IPCObjectStub(u"T.dump") {}
    int Dump(int fd, const std::vector<std::u16string>& args) override
    {
        for (const auto& arg : args) {
            std::string line(arg.begin(), arg.end());
            line += "\n";
            EXPECT_EQ(write(fd, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        }
        return static_cast<int>(args.size());
    }
};

TEST_F(IpcObjectStubTest, DumpCodeCarriesTheArgumentsInAndTheTextBack)
{
    sptr<IPCObjectStub> plain;
    sptr<IPCObjectStub> dumping;
    {
        ScopedProcess scope(owner_);
        plain = new IPCObjectStub(u"T.x");
        dumping = new DumpingStub();
    }
    struct Case {
        sptr<IPCObjectStub> stub;
        std::vector<std::u16string> args;
        int32_t count;  // written as the argument count; -1: no count at all
        int status;
        int32_t result;
        std::string text;
    };
    const std::vector<Case> cases = {
        {plain, {}, -1, ERR_NONE, 0, ""},
        {plain, {u"--json"}, 1, ERR_NONE, 0, ""},
        {dumping, {}, -1, ERR_NONE, 0, ""},
        {dumping, {u"--json", u"a b"}, 2, ERR_NONE, 2, "--json\na b\n"},
        {dumping, {u"x"}, 2, ERR_INVALID_VALUE, 0, ""},  // fewer than it says
        {dumping, {}, 65, ERR_INVALID_VALUE, 0, ""},     // more than a dump takes
        {dumping, {}, -2, ERR_INVALID_VALUE, 0, ""},
    };
    EXPECT_EQ(DUMP_TRANSACTION, 0x5F444D50u);
    for (const Case& c : cases) {
        sptr<IRemoteObject> proxy = Transfer(c.stub, caller_);
        ScopedProcess scope(caller_);
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        data.WriteInterfaceToken(c.stub->GetObjectDescriptor());
        if (c.count != -1) {
            data.WriteInt32(c.count);
        }
        for (const auto& arg : c.args) {
            data.WriteString16(arg);
        }
        ASSERT_EQ(proxy->SendRequest(DUMP_TRANSACTION, data, reply, option), c.status) << c.count;
        if (c.status == ERR_NONE) {
            EXPECT_EQ(reply.ReadInt32(), c.result);
            EXPECT_EQ(reply.ReadString(), c.text);
        }
    }
}

TEST_F(IpcObjectStubTest, StubIsAliveWhileItsOwnerIsAndTakesNoRecipients)
{
    sptr<FunctionStub> stub = MakeStub(owner_, u"test.Stub");
    class Recipient : public IRemoteObject::DeathRecipient {
    public:
        void OnRemoteDied(const wptr<IRemoteObject>&) override {}
    };
    sptr<Recipient> recipient = new Recipient();
    EXPECT_FALSE(stub->IsProxyObject());
    EXPECT_FALSE(stub->AddDeathRecipient(recipient));
    EXPECT_FALSE(stub->RemoveDeathRecipient(recipient));
    EXPECT_EQ(stub->GetOwner(), owner_);
    EXPECT_FALSE(stub->IsObjectDead());
    owner_->Kill();
    EXPECT_TRUE(stub->IsObjectDead());
}

TEST_F(IpcObjectStubTest, StubNotHeldStronglyAnswersOnlyItsOwner)
{
    // Owned by the host process (this thread's), held by no sptr.
    FunctionStub unowned(u"test.Stack", nullptr);
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    EXPECT_EQ(unowned.SendRequest(PING_TRANSACTION, data, reply, option), ERR_NONE);
    ScopedProcess scope(caller_);
    EXPECT_EQ(unowned.SendRequest(PING_TRANSACTION, data, reply, option), ERR_INVALID_VALUE);
}

}  // namespace
}  // namespace Tarvo
