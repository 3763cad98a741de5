// The game-fps callback as a game and the service see it, and the table-driven callback adapter.
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>

#include "hilog.h"
#include "ipc_driver.h"
#include "ipc_types.h"
#include "work_tracker.h"
#include "zel_callback_adapter.h"
#include "zel_callback_proxy.h"
#include "zel_callback_stub.h"
#include "zel_manager_test_doubles.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LogCapture;
using testing::_;
using testing::DoAll;
using testing::NiceMock;
using testing::Return;
using testing::SaveArg;

constexpr char16_t kCallbackToken[] = u"Tarvo.Vantel.IZelCallbackInterface";

// "Tarvo.Vantel.IZelCallbackInterface": length 34, UTF-16LE, a 0 unit, padded to 4 bytes.
const std::string kCallbackTokenHex =
    "22 00 00 00 54 00 61 00 72 00 76 00 6F 00 2E 00 56 00 61 00 6E 00 74 00 65 00 6C 00 2E 00 49 00 5A 00 65 00 "
    "6C 00 43 00 61 00 6C 00 6C 00 62 00 61 00 63 00 6B 00 49 00 6E 00 74 00 65 00 72 00 66 00 61 00 63 00 65 00 "
    "00 00 00 00";

// A game's callback: the frame rates it was told.
class RecordingGame : public ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        received_.push_back(targetFps);
        return 7;  // dropped by the stub
    }
    std::vector<uint32_t> Received()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }
    using ZelCallbackStub::OnGameFpsChangeStub;

private:
    std::mutex mutex_;
    std::vector<uint32_t> received_;
};

// Stands where a game would: the requests as they arrived.
class RecordingCallbackRemote : public RecordingRemote {
public:
    RecordingCallbackRemote() { writeReply = false; }
};

// No delays are involved: waiting for the requests and death notices in flight is enough.
bool Quiet()
{
    return WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10));
}

int Deliver(const sptr<IRemoteObject>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply,
            int flags = MessageOption::TF_ASYNC)
{
    MessageOption option(flags);
    return stub->SendRequest(code, data, reply, option);
}

class ZelCallbackStubTest : public testing::Test {
protected:
    sptr<RecordingGame> game_ = new RecordingGame();
    LogCapture log_;
};

TEST_F(ZelCallbackStubTest, FrameRateReachesTheGameAndTheRequestIsLogged)
{
    MessageParcel data;
    data.WriteInterfaceToken(kCallbackToken);
    data.WriteUint32(90);
    MessageParcel reply;
    EXPECT_EQ(Deliver(game_, 0, data, reply), 0);
    EXPECT_EQ(game_->Received(), std::vector<uint32_t>{90});
    EXPECT_EQ(reply.GetDataSize(), 0u);
    EXPECT_EQ(log_.Messages(LOG_DEBUG),
              std::vector<std::string>{"[ZelCallbackStub::OnRemoteRequest] cmd = 0, flags= 1"});
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
}

TEST_F(ZelCallbackStubTest, BadRequestsAreRefusedOrPassedOnWithoutReachingTheGame)
{
    MessageParcel wrongToken;
    wrongToken.WriteInterfaceToken(u"Tarvo.Vantel.IZelCallbackInterfac");
    wrongToken.WriteUint32(60);
    MessageParcel reply;
    EXPECT_EQ(Deliver(game_, 0, wrongToken, reply, MessageOption::TF_SYNC), 3);

    MessageParcel noFps;
    noFps.WriteInterfaceToken(kCallbackToken);
    EXPECT_EQ(Deliver(game_, 0, noFps, reply, MessageOption::TF_SYNC), -1);

    MessageParcel otherCode;
    otherCode.WriteInterfaceToken(kCallbackToken);
    otherCode.WriteUint32(60);
    EXPECT_EQ(Deliver(game_, 1, otherCode, reply, MessageOption::TF_SYNC), IPC_STUB_UNKNOW_TRANS_ERR);

    MessageParcel direct;  // the handler alone, as the stub calls it after the token
    EXPECT_EQ(game_->OnGameFpsChangeStub(direct, reply), -1);

    EXPECT_TRUE(game_->Received().empty());
    EXPECT_EQ(reply.GetDataSize(), 0u);
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "[ZelCallbackStub::OnRemoteRequest] descriptor is not matched!",
                                            "[ZelManagerStub::RegisterGameFpsListenerStub] read targetFps failed",
                                            "[ZelManagerStub::RegisterGameFpsListenerStub] read targetFps failed",
                                        }));
    EXPECT_EQ(log_.Messages(LOG_DEBUG), (std::vector<std::string>{
                                            "[ZelCallbackStub::OnRemoteRequest] cmd = 0, flags= 0",
                                            "[ZelCallbackStub::OnRemoteRequest] cmd = 0, flags= 0",
                                            "[ZelCallbackStub::OnRemoteRequest] cmd = 1, flags= 0",
                                        }));
}

TEST_F(ZelCallbackStubTest, AGameThatOverridesNothingAnswersZero)
{
    sptr<ZelCallbackStub> plain = new ZelCallbackStub();
    EXPECT_EQ(plain->OnGameFpsChange(60), 0);
    EXPECT_EQ(plain->GetObjectDescriptor(), kCallbackToken);
}

class ZelCallbackProxyTest : public testing::Test {
protected:
    std::shared_ptr<VirtualProcess> service_ = MakeCaller(CallerKind::NATIVE, 200);
    std::shared_ptr<VirtualProcess> game_ = MakeCaller(CallerKind::ORDINARY_APP, 400);
    LogCapture log_;
};

TEST_F(ZelCallbackProxyTest, FrameRateIsSentOneWayAsTokenAndUint32)
{
    sptr<RecordingCallbackRemote> remote;
    {
        ScopedProcess scope(game_);
        remote = new RecordingCallbackRemote();
    }
    ScopedProcess scope(service_);
    sptr<ZelCallbackProxy> proxy = new ZelCallbackProxy(remote);
    EXPECT_EQ(proxy->OnGameFpsChange(120), 0);
    ASSERT_TRUE(Quiet());
    ASSERT_EQ(remote->requests.size(), 1u);
    EXPECT_EQ(remote->requests[0].code, 0u);
    EXPECT_EQ(remote->requests[0].flags, MessageOption::TF_ASYNC);
    EXPECT_EQ(remote->requests[0].waitTime, 8);
    EXPECT_EQ(Hex(remote->requests[0].data), kCallbackTokenHex + " 78 00 00 00");
    EXPECT_TRUE(log_.Records().empty());
}

TEST_F(ZelCallbackProxyTest, WithoutARemoteObjectEveryCallAnswersTwo)
{
    sptr<ZelCallbackProxy> proxy = new ZelCallbackProxy(nullptr);
    EXPECT_EQ(proxy->OnGameFpsChange(60), 2);
    EXPECT_EQ(proxy->OnGameFpsChange(30), 2);
    EXPECT_EQ(log_.Count(LOG_ERROR, "[ZelCallbackProxy::OnGameFpsChange] service is not ready yet!"), 2u);
    EXPECT_EQ(log_.Records().size(), 2u);
}

TEST_F(ZelCallbackProxyTest, AFailedSendAnswersFiveWithTheTransportCode)
{
    sptr<RecordingCallbackRemote> remote;
    {
        ScopedProcess scope(game_);
        remote = new RecordingCallbackRemote();
    }
    ScopedProcess scope(service_);
    sptr<ZelCallbackProxy> proxy = new ZelCallbackProxy(remote);
    IPCDriver::GetInstance().SetTransportFault(game_->Pid(), true);
    EXPECT_EQ(proxy->OnGameFpsChange(60), 5);
    IPCDriver::GetInstance().SetTransportFault(game_->Pid(), false);
    ASSERT_TRUE(Quiet());
    EXPECT_TRUE(remote->requests.empty());
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              std::vector<std::string>{"[ZelCallbackProxy::OnGameFpsChange] SendRequest is failed, error code: " +
                                       std::to_string(ERR_TRANSACTION_FAILED)});
}

// A game registers through the manager; the service then holds its callback as this proxy, which
// reaches the game until the game's process dies and answers 6 from then on.
TEST_F(ZelCallbackProxyTest, AGamesRegisteredCallbackReachesItUntilItsProcessDies)
{
    sptr<NiceMock<MockZelManager>> manager;
    {
        ScopedProcess scope(service_);
        manager = new NiceMock<MockZelManager>();
    }
    sptr<IZelCallbackInterface> registered;
    EXPECT_CALL(*manager, RegisterGameFpsListener(_)).WillOnce(DoAll(SaveArg<0>(&registered), Return(0)));

    sptr<RecordingGame> game;
    {
        ScopedProcess scope(game_);
        game = new RecordingGame();
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManager");
        data.WriteRemoteObject(game->AsObject());
        MessageParcel reply;
        ASSERT_EQ(Deliver(manager, 3, data, reply, MessageOption::TF_SYNC), 0);
        EXPECT_EQ(reply.ReadUint32(), 0u);
    }
    ASSERT_NE(registered, nullptr);
    ASSERT_NE(dynamic_cast<ZelCallbackProxy*>(registered.GetRefPtr()), nullptr);

    ScopedProcess scope(service_);
    EXPECT_EQ(registered->OnGameFpsChange(60), 0);
    ASSERT_TRUE(Quiet());
    EXPECT_EQ(game->Received(), std::vector<uint32_t>{60});

    game_->Kill();
    ASSERT_TRUE(Quiet());
    log_.Clear();
    EXPECT_EQ(registered->OnGameFpsChange(30), 6);
    EXPECT_EQ(registered->OnGameFpsChange(30), 6);
    ASSERT_TRUE(Quiet());
    EXPECT_EQ(game->Received(), std::vector<uint32_t>{60});
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "[ZelCallbackProxy::OnGameFpsChange] client is dead.!",
                                            "[ZelCallbackProxy::OnGameFpsChange] client is dead.!",
                                        }));
}

class ZelCallbackAdapterTest : public testing::Test {
protected:
    sptr<ZelCallbackAdapter> adapter_ = new ZelCallbackAdapter(u"tarvo.powermgr.IDisplayBrightnessCallback");
    LogCapture log_;
};

TEST_F(ZelCallbackAdapterTest, ATaskGetsTheArgumentsAfterTheTokenAndItsReplyGoesBack)
{
    std::vector<uint32_t> seen;
    adapter_->AddTask(0, [&seen](MessageParcel& data, MessageParcel& reply) {
        seen.push_back(data.ReadUint32());
        reply.WriteInt32(-2);
    });
    MessageParcel data;
    data.WriteInterfaceToken(u"tarvo.powermgr.IDisplayBrightnessCallback");
    data.WriteUint32(180);
    MessageParcel reply;
    EXPECT_EQ(Deliver(adapter_, 0, data, reply, MessageOption::TF_SYNC), 0);
    EXPECT_EQ(seen, std::vector<uint32_t>{180});
    EXPECT_EQ(Hex(reply), "FE FF FF FF");
    EXPECT_EQ(adapter_->GetObjectDescriptor(), u"Tarvo.Vantel.IZelCallbackImpl");
    EXPECT_EQ(log_.Lines(), std::vector<std::string>{"D [ZelCallbackAdapter::OnRemoteRequest] cmd = 0, flags= 0"});
}

TEST_F(ZelCallbackAdapterTest, WrongTokensAndCodesWithoutATaskAnswerZeroAndRunNothing)
{
    int runs = 0;
    adapter_->AddTask(0, [&runs](MessageParcel&, MessageParcel&) { ++runs; });
    for (const std::u16string token :
         {u"tarvo.powermgr.IDisplayBrightnessCallbac", u"tarvo.powermgr.IDisplayBrightnessCallbackX",
          u"tarvo.powermgr.IDisplayBrightnessCallbacK", u"Tarvo.Vantel.IZelCallbackImpl"}) {
        MessageParcel data;
        data.WriteInterfaceToken(token);
        MessageParcel reply;
        EXPECT_EQ(Deliver(adapter_, 0, data, reply, MessageOption::TF_SYNC), 0);
    }
    EXPECT_EQ(log_.Count(LOG_ERROR, "[ZelCallbackAdapter::OnRemoteRequest] descriptor is not matched!"), 4u);

    log_.Clear();
    for (uint32_t code : {1u, PING_TRANSACTION, INTERFACE_TRANSACTION}) {
        MessageParcel data;
        data.WriteInterfaceToken(u"tarvo.powermgr.IDisplayBrightnessCallback");
        MessageParcel reply;
        EXPECT_EQ(Deliver(adapter_, code, data, reply, MessageOption::TF_SYNC), 0);
        EXPECT_EQ(reply.GetDataSize(), 0u);
    }
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
    EXPECT_EQ(runs, 0);
}

TEST_F(ZelCallbackAdapterTest, AddingATaskAgainReplacesTheFirst)
{
    std::vector<std::string> ran;
    adapter_->AddTask(0, [&ran](MessageParcel&, MessageParcel&) { ran.push_back("first"); });
    adapter_->AddTask(0, [&ran](MessageParcel&, MessageParcel&) { ran.push_back("second"); });
    MessageParcel data;
    data.WriteInterfaceToken(u"tarvo.powermgr.IDisplayBrightnessCallback");
    MessageParcel reply;
    EXPECT_EQ(Deliver(adapter_, 0, data, reply, MessageOption::TF_SYNC), 0);
    EXPECT_EQ(ran, std::vector<std::string>{"second"});
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
