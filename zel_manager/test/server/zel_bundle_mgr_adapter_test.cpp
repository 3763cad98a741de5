// Resolving a caller's uid to its package through the bundle manager of another process.
#include "zel_bundle_mgr_adapter.h"

#include <gtest/gtest.h>

#include "bundle_mgr_interface.h"
#include "hilog.h"
#include "ipc_transport.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_ERROR;
using Strings = std::vector<std::string>;

// The bundle manager: knows uid 20010040 only; keeps each request as "code flags wait: bytes".
class FakeBundleManager : public IPCObjectStub {
public:
    FakeBundleManager() : IPCObjectStub(AppExecFwk::BUNDLE_MGR_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        requests.push_back(std::to_string(code) + " " + std::to_string(option.GetFlags()) + " " +
                           std::to_string(option.GetWaitTime()) + ": " +
                           Tarvo::Test::HexAfterToken(data, AppExecFwk::BUNDLE_MGR_DESCRIPTOR));
        (void)data.ReadInterfaceToken();
        if (data.ReadInt32() != 20010040) {
            reply.WriteInt32(AppExecFwk::BUNDLE_MGR_ERR_UNKNOWN_UID);
            return 0;
        }
        reply.WriteInt32(AppExecFwk::BUNDLE_MGR_OK);
        reply.WriteString("com.game.alpha");
        return 0;
    }
    Strings requests;  // written by the bundle manager's thread while the caller waits
};

class ZelBundleMgrAdapterTest : public testing::Test {
protected:
    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> bundleProcess_ = Tarvo::Test::MakeProcess(30, "bundle_mgr");
    ScopedProcess scope_{Tarvo::Test::MakeProcess(200, "zel_manager")};
    ZelBundleMgrAdapter* adapter_ = ZelBundleMgrAdapter::GetInstance();
    HiviewDFX::LogCapture log_;
};

// Connecting is tried on every call until it succeeds; the object is then kept for good, even
// when the registry withdraws it or the service manager goes.
TEST_F(ZelBundleMgrAdapterTest, UidIsResolvedByCodeNineOnTheConnectionKeptFromTheFirstSuccess)
{
    std::string pkgName = "unchanged";
    EXPECT_FALSE(adapter_->ConnectService());
    EXPECT_FALSE(adapter_->GetPkgNameByUid(20010040, pkgName));
    auto bundleMgr =
        samgr_.AddAbility<FakeBundleManager>(AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID, bundleProcess_);
    EXPECT_FALSE(adapter_->GetPkgNameByUid(12345, pkgName));
    EXPECT_EQ(pkgName, "unchanged");
    samgr_->RemoveSystemAbility(AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);
    EXPECT_TRUE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(pkgName, "com.game.alpha");
    EXPECT_EQ(bundleMgr->requests, (Strings{"9 0 8: 39 30 00 00", "9 0 8: 38 54 31 01"}));  // 12345, 20010040

    IPCTransport::Get().SetTransportFault(30, true);
    EXPECT_FALSE(adapter_->GetPkgNameByUid(20010040, pkgName));
    IPCTransport::Get().SetTransportFault(30, false);
    samgr_.Uninstall();
    EXPECT_TRUE(adapter_->ConnectService());

    EXPECT_EQ(log_.Messages(LOG_DEBUG), (Strings{"ZelBundleMgrAdapter::GetPkgNameByUid uid = 20010040",
                                                 "ZelBundleMgrAdapter::GetPkgNameByUid uid = 12345",
                                                 "ZelBundleMgrAdapter::GetPkgNameByUid uid = 20010040",
                                                 "ZelBundleMgrAdapter::GetPkgNameByUid uid = 20010040"}));
    EXPECT_EQ(log_.Messages(LOG_ERROR), (Strings{"ZelBundleMgrAdapter::GetPkgNameByUid connect service faild.",
                                                 "ZelBundleMgrAdapter::GetPkgNameByUid SendRequest error code 0",
                                                 "ZelBundleMgrAdapter::GetPkgNameByUid SendRequest error code " +
                                                     std::to_string(ERR_TRANSACTION_FAILED)}));
}

}  // namespace
}  // namespace Tarvo::Vantel
