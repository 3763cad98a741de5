// The wire format of IZelManager, byte for byte, both ways.
#include <gtest/gtest.h>

#include "zel_manager_proxy.h"
#include "zel_manager_test_doubles.h"

namespace Tarvo::Vantel::Test {
namespace {
using testing::_;
using testing::Return;

class ZelManagerParcelTest : public testing::Test {
protected:
    // The last request the proxy sent, replayed into a stub whose operations are mocked.
    int Replay(MessageParcel& reply)
    {
        MessageParcel data = remote_->requests.back().data;
        MessageOption option;
        return stub_->OnRemoteRequest(remote_->requests.back().code, data, reply, option);
    }

    sptr<RecordingRemote> remote_ = new RecordingRemote();
    sptr<ZelManagerProxy> proxy_ = new ZelManagerProxy(remote_);
    sptr<testing::StrictMock<MockZelManager>> stub_ = new testing::StrictMock<MockZelManager>();
};

TEST_F(ZelManagerParcelTest, SetSceneIsOneWayWithTwoStringsAndTheState)
{
    proxy_->SetScene("com.a", "S", 1);
    ASSERT_EQ(remote_->requests.size(), 1u);
    EXPECT_EQ(remote_->requests[0].code, 0u);
    EXPECT_EQ(remote_->requests[0].flags, MessageOption::TF_ASYNC);
    EXPECT_EQ(remote_->requests[0].waitTime, 8);
    EXPECT_EQ(Hex(remote_->requests[0].data), kManagerTokenHex +
                                                  " 05 00 00 00 63 6F 6D 2E 61 00 00 00"  // "com.a"
                                                  " 01 00 00 00 53 00 00 00"              // "S"
                                                  " 01 00 00 00");                        // state

    EXPECT_CALL(*stub_, SetScene("com.a", "S", 1u));
    MessageParcel reply;
    EXPECT_EQ(Replay(reply), 0);
    EXPECT_EQ(reply.GetDataSize(), 0u);
}

TEST_F(ZelManagerParcelTest, ChangeResolutionModeCarriesTwoInt32AndRepliesOne)
{
    remote_->replyValue = 0;
    EXPECT_EQ(proxy_->ChangeResolutionMode(-2, 7), 0);
    EXPECT_EQ(remote_->requests[0].code, 1u);
    EXPECT_EQ(remote_->requests[0].flags, MessageOption::TF_SYNC);
    EXPECT_EQ(Hex(remote_->requests[0].data), kManagerTokenHex + " FE FF FF FF 07 00 00 00");

    EXPECT_CALL(*stub_, ChangeResolutionMode(-2, 7)).WillOnce(Return(-5));
    MessageParcel reply;
    EXPECT_EQ(Replay(reply), 0);
    EXPECT_EQ(Hex(reply), "FB FF FF FF");
}

TEST_F(ZelManagerParcelTest, ThermalPolicyTravelsAsKeysThenValuesInKeyOrder)
{
    remote_->replyValue = 1;
    EXPECT_EQ(proxy_->SetThermalPolicy({{102, 7}, {101, 3}}), 1u);
    EXPECT_EQ(remote_->requests[0].code, 2u);
    EXPECT_EQ(Hex(remote_->requests[0].data), kManagerTokenHex +
                                                  " 02 00 00 00 65 00 00 00 66 00 00 00"    // keys 101, 102
                                                  " 02 00 00 00 03 00 00 00 07 00 00 00");  // values 3, 7

    std::map<uint32_t, uint32_t> expected = {{101, 3}, {102, 7}};
    EXPECT_CALL(*stub_, SetThermalPolicy(expected)).WillOnce(Return(1));
    MessageParcel reply;
    EXPECT_EQ(Replay(reply), 0);
    EXPECT_EQ(Hex(reply), "01 00 00 00");
}

TEST_F(ZelManagerParcelTest, RegisterGameFpsListenerCarriesTheCallbackByReference)
{
    remote_->replyValue = 0;
    sptr<IZelCallbackInterface> callback = new TestCallback();
    EXPECT_EQ(proxy_->RegisterGameFpsListener(callback), 0u);
    EXPECT_EQ(remote_->requests[0].code, 3u);
    // An object reference: marker and index into the parcel's object table, never the object's bytes.
    EXPECT_EQ(Hex(remote_->requests[0].data), kManagerTokenHex + " 21 4A 42 4F 00 00 00 00");
    EXPECT_EQ(remote_->requests[0].data.ReadInterfaceToken(), u"Tarvo.IZelManager");
    EXPECT_EQ(remote_->requests[0].data.ReadRemoteObject(), callback->AsObject());
}

TEST_F(ZelManagerParcelTest, SetGameFpsForThermalControlCarriesPackageAndFps)
{
    remote_->replyValue = 0;
    EXPECT_EQ(proxy_->SetGameFpsForThermalControl("com.game", 60), 0u);
    EXPECT_EQ(remote_->requests[0].code, 4u);
    EXPECT_EQ(Hex(remote_->requests[0].data),
              kManagerTokenHex + " 08 00 00 00 63 6F 6D 2E 67 61 6D 65 00 00 00 00 3C 00 00 00");

    EXPECT_CALL(*stub_, SetGameFpsForThermalControl("com.game", 60u)).WillOnce(Return(1));
    MessageParcel reply;
    EXPECT_EQ(Replay(reply), 0);
    EXPECT_EQ(Hex(reply), "01 00 00 00");
}

TEST_F(ZelManagerParcelTest, TruncatedOrOversizedRequestsFailWithoutReachingTheService)
{
    auto send = [this](MessageParcel& data) {
        MessageParcel reply;
        MessageOption option;
        return stub_->OnRemoteRequest(2, data, reply, option);
    };
    // A vector count far beyond the bytes that follow: refused, nothing allocated from it.
    MessageParcel huge;
    huge.WriteInterfaceToken(u"Tarvo.IZelManager");
    huge.WriteInt32(0x3FFFFFFF);
    huge.WriteUint32(101);
    EXPECT_EQ(send(huge), -1);
    // A negative count.
    MessageParcel negative;
    negative.WriteInterfaceToken(u"Tarvo.IZelManager");
    negative.WriteInt32(-1);
    EXPECT_EQ(send(negative), -1);
    // Cut in the middle of the values vector.
    MessageParcel cut;
    cut.WriteInterfaceToken(u"Tarvo.IZelManager");
    cut.WriteUInt32Vector({101});
    cut.WriteInt32(1);
    EXPECT_EQ(send(cut), -1);
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
