// The wire format of IZelManager, byte for byte both ways, and the proxy's fall-back values and
// messages: what a client sees when things go wrong.
#include "zel_manager_proxy.h"

#include <gtest/gtest.h>

#include "hilog.h"
#include "zel_manager_test_doubles.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_WARN;
using HiviewDFX::LogCapture;
using testing::Return;
using Results = std::vector<int64_t>;
using Strings = std::vector<std::string>;

// The four operations with a result, in the order of the table in zel_manager_proxy.h.
Results CallAll(ZelManagerProxy& proxy)
{
    sptr<IZelCallbackInterface> callback = new TestCallback();
    return {proxy.ChangeResolutionMode(1, 0), proxy.SetThermalPolicy({{101, 60}}),
            proxy.RegisterGameFpsListener(callback), proxy.SetGameFpsForThermalControl("com.game", 30)};
}

// Each request as the proxy writes it, replayed into a stub whose operations are mocked.
TEST(ZelManagerParcelTest, EachOperationTravelsAsItsFieldsAfterTheTokenAndItsReplyComesBack)
{
    struct Case {
        std::function<int64_t(ZelManagerProxy&)> call;
        uint32_t code;
        int flags;
        std::string fields;
        std::function<void(MockZelManager&)> expect;
        std::string reply;
    };
    const Case cases[] = {
        {[](ZelManagerProxy& p) { return (p.SetScene("com.a", "S", 1), 0); }, 0, MessageOption::TF_ASYNC,
         " 05 00 00 00 63 6F 6D 2E 61 00 00 00 01 00 00 00 53 00 00 00 01 00 00 00",  // "com.a", "S", 1
         [](MockZelManager& m) { EXPECT_CALL(m, SetScene("com.a", "S", 1u)); }, ""},
        {[](ZelManagerProxy& p) { return p.ChangeResolutionMode(-2, 7); }, 1, MessageOption::TF_SYNC,
         " FE FF FF FF 07 00 00 00",
         [](MockZelManager& m) { EXPECT_CALL(m, ChangeResolutionMode(-2, 7)).WillOnce(Return(-5)); }, "FB FF FF FF"},
        // Keys, then values, in key order.
        {[](ZelManagerProxy& p) {
             return p.SetThermalPolicy({{102, 7}, {101, 3}});
         },
         2, MessageOption::TF_SYNC, " 02 00 00 00 65 00 00 00 66 00 00 00 02 00 00 00 03 00 00 00 07 00 00 00",
         [](MockZelManager& m) {
             EXPECT_CALL(m, SetThermalPolicy(std::map<uint32_t, uint32_t>{{101, 3}, {102, 7}})).WillOnce(Return(1));
         },
         "01 00 00 00"},
        {[](ZelManagerProxy& p) { return p.SetGameFpsForThermalControl("com.game", 60); }, 4, MessageOption::TF_SYNC,
         " 08 00 00 00 63 6F 6D 2E 67 61 6D 65 00 00 00 00 3C 00 00 00",
         [](MockZelManager& m) { EXPECT_CALL(m, SetGameFpsForThermalControl("com.game", 60u)).WillOnce(Return(1)); },
         "01 00 00 00"},
    };
    for (const Case& c : cases) {
        sptr<RecordingRemote> remote = new RecordingRemote();
        remote->replyValue = 7;  // what the proxy returns, but for the one-way SetScene
        ZelManagerProxy proxy(remote);
        EXPECT_EQ(c.call(proxy), c.code == 0 ? 0 : 7);
        ASSERT_EQ(remote->requests.size(), 1u);
        EXPECT_EQ(remote->requests[0].code, c.code);
        EXPECT_EQ(remote->requests[0].flags, c.flags);
        EXPECT_EQ(remote->requests[0].waitTime, 8);
        EXPECT_EQ(Hex(remote->requests[0].data), kManagerTokenHex + c.fields);

        sptr<testing::StrictMock<MockZelManager>> stub = new testing::StrictMock<MockZelManager>();
        c.expect(*stub);
        MessageParcel reply;
        MessageOption option;
        EXPECT_EQ(stub->OnRemoteRequest(c.code, remote->requests[0].data, reply, option), 0);
        EXPECT_EQ(Hex(reply), c.reply);
    }
}

// An object reference: marker and index into the parcel's object table, never the object's bytes.
TEST(ZelManagerParcelTest, RegisterGameFpsListenerCarriesTheCallbackByReference)
{
    sptr<RecordingRemote> remote = new RecordingRemote();
    sptr<IZelCallbackInterface> callback = new TestCallback();
    EXPECT_EQ(ZelManagerProxy(remote).RegisterGameFpsListener(callback), 0u);
    EXPECT_EQ(remote->requests[0].code, 3u);
    EXPECT_EQ(Hex(remote->requests[0].data), kManagerTokenHex + " 21 4A 42 4F 00 00 00 00");
    EXPECT_EQ(remote->requests[0].data.ReadInterfaceToken(), u"Tarvo.IZelManager");
    EXPECT_EQ(remote->requests[0].data.ReadRemoteObject(), callback->AsObject());
}

TEST(ZelManagerProxyTest, WithoutARemoteObjectEveryOperationFallsBackAtOnce)
{
    LogCapture log;
    ZelManagerProxy proxy(nullptr);
    proxy.SetScene("com.a", "S", 1);
    EXPECT_EQ(CallAll(proxy), (Results{-1, 2, 2, 2}));
    Strings expected;
    for (const char* op : {"SetScene", "ChangeResolutionMode", "SetThermalPolicy", "RegisterGameFpsListener",
                           "SetGameFpsForThermalControl"}) {
        expected.push_back(std::string("[ZelManagerProxy::") + op + "] service is not ready yet!");
    }
    EXPECT_EQ(log.Messages(LOG_ERROR), expected);
}

TEST(ZelManagerProxyTest, RejectedOrOversizedArgumentsAreNotSent)
{
    LogCapture log;
    sptr<RecordingRemote> remote = new RecordingRemote();
    ZelManagerProxy proxy(remote);
    sptr<IZelCallbackInterface> noCallback;
    const std::string huge(300 * 1024, 'x');
    std::map<uint32_t, uint32_t> hugeMap;
    for (uint32_t key = 0; key < 30000; ++key) {
        hugeMap[key] = key;
    }
    EXPECT_EQ(proxy.SetThermalPolicy({}), 0u);
    EXPECT_EQ(proxy.RegisterGameFpsListener(noCallback), 5u);
    proxy.SetScene(huge, "S", 1);
    proxy.SetScene("com.a", huge, 1);
    EXPECT_EQ(proxy.SetThermalPolicy(hugeMap), 0u);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl(huge, 30), 5u);
    EXPECT_TRUE(remote->requests.empty());
    EXPECT_EQ(log.Messages(LOG_WARN), (Strings{"ZelManagerProxy::SetThermalPolicy data verify fail",
                                               "[ZelManagerProxy::RegisterGameFpsListener] callback is null!"}));
    EXPECT_EQ(log.Messages(LOG_ERROR),
              (Strings{"[ZelManagerProxy::SetScene] write pkgName failed",
                       "[ZelManagerProxy::SetScene] write sceneName failed",
                       "[ZelManagerProxy::SetThermalPolicy] write values failed!",
                       "[ZelManagerProxy::SetGameFpsForThermalControl] write pkgName failed!"}));
}

// A send that fails (here the stub's refusal) or a reply without its value.
TEST(ZelManagerProxyTest, AFailedSendOrAnEmptyReplyGivesEachOperationsFallBack)
{
    const std::string ops[] = {"[ZelManagerProxy::ChangeResolutionMode]", "[ZelManagerProxy::SetThermalPolicy]",
                               "[ZelManagerProxy::RegisterGameFpsListener]",
                               "[ZelManagerProxy::SetGameFpsForThermalControl]"};
    for (bool refused : {true, false}) {
        LogCapture log;
        sptr<RecordingRemote> remote = new RecordingRemote();
        remote->status = refused ? 3 : 0;
        remote->writeReply = refused;
        ZelManagerProxy proxy(remote);
        proxy.SetScene("com.a", "S", 1);
        EXPECT_EQ(CallAll(proxy), refused ? (Results{-1, 0, 5, 5}) : (Results{-1, 0, 5, 0}));
        EXPECT_EQ(remote->requests.size(), 5u);
        Strings expected;
        for (const std::string& op : ops) {
            expected.push_back(refused ? op + " Send Request faild code = 3" : op + " read result failed");
        }
        if (refused) {
            expected.back() = "[ZelManagerProxy SetGameFpsForThermalControl] Send Request faild code = 3";
            EXPECT_EQ(log.Messages(LOG_ERROR),
                      Strings{"[ZelManagerProxy::SetScene] SendRequest is failed, error code: 3"});
        }
        EXPECT_EQ(log.Messages(refused ? LOG_WARN : LOG_ERROR), expected);
    }
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
