#include "ipc_object_stub.h"

#include <gtest/gtest.h>

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
