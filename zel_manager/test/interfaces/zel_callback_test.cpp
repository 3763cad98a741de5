// The game-fps callback as a game and the service see it, and the table-driven callback adapter.
#include <gtest/gtest.h>

#include "hilog.h"
#include "ipc_types.h"
#include "zel_callback_adapter.h"
#include "zel_callback_proxy.h"
#include "zel_callback_stub.h"
#include "zel_manager_test_doubles.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LogCapture;
using Strings = std::vector<std::string>;

constexpr char16_t kCallbackToken[] = u"Tarvo.Vantel.IZelCallbackInterface";
constexpr char16_t kBrightnessToken[] = u"tarvo.powermgr.IDisplayBrightnessCallback";

// A game's callback whose answer the one-way stub drops.
class AnsweringGame : public ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t) override { return 7; }
};

int Deliver(const sptr<IRemoteObject>& stub, uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    MessageOption option(MessageOption::TF_SYNC);
    return stub->SendRequest(code, data, reply, option);
}

MessageParcel Request(const std::u16string& token, uint32_t value)
{
    MessageParcel data;
    data.WriteInterfaceToken(token);
    data.WriteUint32(value);
    return data;
}

// The stub's answer is never the game's; its other paths are played in raw_callback_stub.scn.
TEST(ZelCallbackStubTest, TheGamesAnswerIsDropped)
{
    MessageParcel data = Request(kCallbackToken, 90);
    MessageParcel reply;
    EXPECT_EQ(Deliver(sptr<AnsweringGame>(new AnsweringGame()), 0, data, reply), 0);
    EXPECT_EQ(reply.GetDataSize(), 0u);
    EXPECT_EQ(sptr<ZelCallbackStub>(new ZelCallbackStub())->OnGameFpsChange(60), 0);
}

// One-way, token and uint32: 0 sent, 5 when sending fails, 2 without a remote object.
TEST(ZelCallbackProxyTest, FrameRateIsSentOneWayAsTokenAndUint32)
{
    LogCapture log;
    sptr<RecordingRemote> remote = new RecordingRemote();
    sptr<ZelCallbackProxy> proxy = new ZelCallbackProxy(remote);
    EXPECT_EQ(proxy->OnGameFpsChange(120), 0);
    remote->status = 29189;
    EXPECT_EQ(proxy->OnGameFpsChange(60), 5);
    EXPECT_EQ(sptr<ZelCallbackProxy>(new ZelCallbackProxy(nullptr))->OnGameFpsChange(60), 2);
    ASSERT_EQ(remote->requests.size(), 2u);
    EXPECT_EQ(remote->requests[0].code, 0u);
    EXPECT_EQ(remote->requests[0].flags, MessageOption::TF_ASYNC);
    EXPECT_EQ(remote->requests[0].waitTime, 8);
    // "Tarvo.Vantel.IZelCallbackInterface": length 34, UTF-16LE, a 0 unit, padded to 4 bytes; then 120.
    EXPECT_EQ(Hex(remote->requests[0].data),
              "22 00 00 00 54 00 61 00 72 00 76 00 6F 00 2E 00 56 00 61 00 6E 00 74 00 65 00 6C 00 2E 00 49 00 5A 00 "
              "65 00 6C 00 43 00 61 00 6C 00 6C 00 62 00 61 00 63 00 6B 00 49 00 6E 00 74 00 65 00 72 00 66 00 61 00 "
              "63 00 65 00 00 00 00 00 78 00 00 00");
    EXPECT_EQ(log.Lines(), (Strings{"E [ZelCallbackProxy::OnGameFpsChange] SendRequest is failed, error code: 29189",
                                    "E [ZelCallbackProxy::OnGameFpsChange] service is not ready yet!"}));
}

// Requests must carry the adapter's token and a code with a task; the answer is always 0. The
// task reads after the token and its reply goes back; a second task for a code replaces the first.
TEST(ZelCallbackAdapterTest, OnlyRequestsWithTheTokenAndAKnownCodeRunTheirTask)
{
    sptr<ZelCallbackAdapter> adapter = new ZelCallbackAdapter(kBrightnessToken);
    EXPECT_EQ(adapter->GetObjectDescriptor(), u"Tarvo.Vantel.IZelCallbackImpl");
    Strings ran;
    adapter->AddTask(0, [&ran](MessageParcel&, MessageParcel&) { ran.push_back("replaced"); });
    adapter->AddTask(0, [&ran](MessageParcel& data, MessageParcel& reply) {
        ran.push_back(std::to_string(data.ReadUint32()));
        reply.WriteInt32(-2);
    });
    const std::vector<std::pair<std::u16string, uint32_t>> ignored = {
        {u"tarvo.powermgr.IDisplayBrightnessCallbac", 0},
        {u"tarvo.powermgr.IDisplayBrightnessCallbackX", 0},
        {u"tarvo.powermgr.IDisplayBrightnessCallbacK", 0},
        {u"Tarvo.Vantel.IZelCallbackImpl", 0},
        {kBrightnessToken, 1},
        {kBrightnessToken, PING_TRANSACTION},
        {kBrightnessToken, INTERFACE_TRANSACTION}};
    LogCapture log;
    for (const auto& [token, code] : ignored) {
        MessageParcel data = Request(token, 180);
        MessageParcel reply;
        EXPECT_EQ(Deliver(adapter, code, data, reply), 0);
        EXPECT_EQ(reply.GetDataSize(), 0u);
    }
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(log.Messages(LOG_ERROR), Strings(4, "[ZelCallbackAdapter::OnRemoteRequest] descriptor is not matched!"));

    log.Clear();
    MessageParcel data = Request(kBrightnessToken, 180);
    MessageParcel reply;
    EXPECT_EQ(Deliver(adapter, 0, data, reply), 0);
    EXPECT_EQ(ran, Strings{"180"});
    EXPECT_EQ(Hex(reply), "FE FF FF FF");
    EXPECT_EQ(log.Lines(), Strings{"D [ZelCallbackAdapter::OnRemoteRequest] cmd = 0, flags= 0"});
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
