// The proxy's fall-back values and messages: what a client sees when things go wrong.
#include "zel_manager_proxy.h"

#include <gtest/gtest.h>

#include "hilog.h"
#include "ipc_driver.h"
#include "ipc_types.h"
#include "zel_manager_test_doubles.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_WARN;
using HiviewDFX::LogCapture;

class ZelManagerProxyTest : public testing::Test {
protected:
    LogCapture log_;
};

TEST_F(ZelManagerProxyTest, WithoutARemoteObjectEveryOperationFallsBackAtOnce)
{
    ZelManagerProxy proxy(nullptr);
    sptr<IZelCallbackInterface> callback = new TestCallback();
    proxy.SetScene("com.a", "S", 1);
    EXPECT_EQ(proxy.ChangeResolutionMode(1, 0), -1);
    EXPECT_EQ(proxy.SetThermalPolicy({{101, 60}}), 2u);
    EXPECT_EQ(proxy.RegisterGameFpsListener(callback), 2u);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl("com.game", 30), 2u);
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "[ZelManagerProxy::SetScene] service is not ready yet!",
                                            "[ZelManagerProxy::ChangeResolutionMode] service is not ready yet!",
                                            "[ZelManagerProxy::SetThermalPolicy] service is not ready yet!",
                                            "[ZelManagerProxy::RegisterGameFpsListener] service is not ready yet!",
                                            "[ZelManagerProxy::SetGameFpsForThermalControl] service is not ready yet!",
                                        }));
}

TEST_F(ZelManagerProxyTest, RejectedArgumentsSendNothing)
{
    sptr<RecordingRemote> remote = new RecordingRemote();
    ZelManagerProxy proxy(remote);
    sptr<IZelCallbackInterface> noCallback;
    EXPECT_EQ(proxy.SetThermalPolicy({}), 0u);
    EXPECT_EQ(proxy.RegisterGameFpsListener(noCallback), 5u);
    EXPECT_TRUE(remote->requests.empty());
    EXPECT_EQ(log_.Messages(LOG_WARN), (std::vector<std::string>{
                                           "ZelManagerProxy::SetThermalPolicy data verify fail",
                                           "[ZelManagerProxy::RegisterGameFpsListener] callback is null!",
                                       }));
}

TEST_F(ZelManagerProxyTest, ArgumentsBeyondTheParcelCapacityAreNotSent)
{
    sptr<RecordingRemote> remote = new RecordingRemote();
    ZelManagerProxy proxy(remote);
    std::string huge(300 * 1024, 'x');
    std::map<uint32_t, uint32_t> hugeMap;
    for (uint32_t key = 0; key < 30000; ++key) {
        hugeMap[key] = key;
    }
    proxy.SetScene(huge, "S", 1);
    proxy.SetScene("com.a", huge, 1);
    EXPECT_EQ(proxy.SetThermalPolicy(hugeMap), 0u);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl(huge, 30), 5u);
    EXPECT_TRUE(remote->requests.empty());
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "[ZelManagerProxy::SetScene] write pkgName failed",
                                            "[ZelManagerProxy::SetScene] write sceneName failed",
                                            "[ZelManagerProxy::SetThermalPolicy] write values failed!",
                                            "[ZelManagerProxy::SetGameFpsForThermalControl] write pkgName failed!",
                                        }));
}

TEST_F(ZelManagerProxyTest, AFailingTransportGivesEachOperationsFallBack)
{
    auto serviceProcess = MakeCaller(CallerKind::NATIVE, 500);
    sptr<RecordingRemote> service;
    {
        ScopedProcess scope(serviceProcess);
        service = new RecordingRemote();
    }
    ScopedProcess client(MakeCaller(CallerKind::NATIVE, 501));
    MessageParcel carrier;  // the client holds the service as a proxy, as it would from samgr
    carrier.WriteRemoteObject(sptr<IRemoteObject>(service));
    ZelManagerProxy proxy(carrier.ReadRemoteObject());
    sptr<IZelCallbackInterface> callback = new TestCallback();

    IPCDriver::GetInstance().SetTransportFault(500, true);
    proxy.SetScene("com.a", "S", 1);
    EXPECT_EQ(proxy.ChangeResolutionMode(1, 0), -1);
    EXPECT_EQ(proxy.SetThermalPolicy({{101, 60}}), 0u);
    EXPECT_EQ(proxy.RegisterGameFpsListener(callback), 5u);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl("com.game", 30), 5u);
    IPCDriver::GetInstance().SetTransportFault(500, false);
    EXPECT_TRUE(service->requests.empty());

    const std::string code = std::to_string(ERR_TRANSACTION_FAILED);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              std::vector<std::string>{"[ZelManagerProxy::SetScene] SendRequest is failed, error code: " + code});
    EXPECT_EQ(log_.Messages(LOG_WARN),
              (std::vector<std::string>{
                  "[ZelManagerProxy::ChangeResolutionMode] Send Request faild code = " + code,
                  "[ZelManagerProxy::SetThermalPolicy] Send Request faild code = " + code,
                  "[ZelManagerProxy::RegisterGameFpsListener] Send Request faild code = " + code,
                  "[ZelManagerProxy SetGameFpsForThermalControl] Send Request faild code = " + code,
              }));
}

TEST_F(ZelManagerProxyTest, AReplyWithoutItsValueGivesEachOperationsFallBack)
{
    sptr<RecordingRemote> remote = new RecordingRemote();
    remote->writeReply = false;
    ZelManagerProxy proxy(remote);
    sptr<IZelCallbackInterface> callback = new TestCallback();
    EXPECT_EQ(proxy.ChangeResolutionMode(1, 0), -1);
    EXPECT_EQ(proxy.SetThermalPolicy({{101, 60}}), 0u);
    EXPECT_EQ(proxy.RegisterGameFpsListener(callback), 5u);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl("com.game", 30), 0u);
    EXPECT_EQ(remote->requests.size(), 4u);
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "[ZelManagerProxy::ChangeResolutionMode] read result failed",
                                            "[ZelManagerProxy::SetThermalPolicy] read result failed",
                                            "[ZelManagerProxy::RegisterGameFpsListener] read result failed",
                                            "[ZelManagerProxy::SetGameFpsForThermalControl] read result failed",
                                        }));
}

TEST_F(ZelManagerProxyTest, AStubsRefusalIsTheSendResult)
{
    sptr<RecordingRemote> remote = new RecordingRemote();
    remote->status = 3;
    ZelManagerProxy proxy(remote);
    EXPECT_EQ(proxy.SetGameFpsForThermalControl("com.game", 30), 5u);
    EXPECT_TRUE(log_.Contains(LOG_WARN, "[ZelManagerProxy SetGameFpsForThermalControl] Send Request faild code = 3"));
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
