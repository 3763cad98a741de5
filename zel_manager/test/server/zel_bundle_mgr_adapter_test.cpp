// Resolving a caller's uid to its package through the bundle manager of another process.
#include "zel_bundle_mgr_adapter.h"

#include <gtest/gtest.h>

#include <map>
#include <mutex>

#include "bundle_mgr_interface.h"
#include "hilog.h"
#include "ipc_driver.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LogCapture;

// The bundle manager: names the uids it knows and records what it was asked.
class FakeBundleManager : public IPCObjectStub {
public:
    struct Request {
        uint32_t code;
        int flags;
        int waitTime;
        std::string args;  // the bytes after the interface token
    };
    FakeBundleManager() : IPCObjectStub(AppExecFwk::BUNDLE_MGR_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(
            {code, option.GetFlags(), option.GetWaitTime(), Tarvo::Test::HexAfterToken(data, descriptor_)});
        (void)data.ReadInterfaceToken();
        int32_t uid = data.ReadInt32();
        auto known = names_.find(uid);
        if (known == names_.end()) {
            reply.WriteInt32(AppExecFwk::BUNDLE_MGR_ERR_UNKNOWN_UID);
            return 0;
        }
        reply.WriteInt32(AppExecFwk::BUNDLE_MGR_OK);
        reply.WriteString(known->second);
        return 0;
    }
    std::vector<Request> Requests()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return requests_;
    }

private:
    const std::u16string descriptor_ = AppExecFwk::BUNDLE_MGR_DESCRIPTOR;
    std::mutex mutex_;
    std::map<int32_t, std::string> names_ = {{20010040, "com.game.alpha"}};
    std::vector<Request> requests_;
};

class ZelBundleMgrAdapterTest : public testing::Test {
protected:
    sptr<FakeBundleManager> AddBundleManager()
    {
        return samgr_.AddAbility<FakeBundleManager>(AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID, bundleProcess_);
    }

    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> bundleProcess_ = Tarvo::Test::MakeProcess(30, "bundle_mgr");
    std::shared_ptr<VirtualProcess> service_ = Tarvo::Test::MakeProcess(200, "zel_manager");
    ScopedProcess scope_{service_};
    ZelBundleMgrAdapter* adapter_ = ZelBundleMgrAdapter::GetInstance();
    LogCapture log_;
};

TEST_F(ZelBundleMgrAdapterTest, UidIsResolvedByCodeNineOnTheConnectionKeptFromTheFirstSuccess)
{
    sptr<FakeBundleManager> bundleMgr = AddBundleManager();
    std::string pkgName;
    EXPECT_TRUE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(pkgName, "com.game.alpha");
    std::vector<FakeBundleManager::Request> requests = bundleMgr->Requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].code, 9u);
    EXPECT_EQ(requests[0].flags, MessageOption::TF_SYNC);
    EXPECT_EQ(requests[0].waitTime, 8);
    EXPECT_EQ(requests[0].args, "38 54 31 01");  // 20010040
    EXPECT_EQ(log_.Messages(LOG_DEBUG),
              std::vector<std::string>{"ZelBundleMgrAdapter::GetPkgNameByUid uid = 20010040"});

    // Withdrawn from the registry, the bundle manager is still reached through the kept object.
    samgr_->RemoveSystemAbility(AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);
    pkgName.clear();
    EXPECT_TRUE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(pkgName, "com.game.alpha");
    EXPECT_EQ(bundleMgr->Requests().size(), 2u);
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
}

TEST_F(ZelBundleMgrAdapterTest, RefusedOrUndeliveredRequestsLeaveTheNameUnchanged)
{
    sptr<FakeBundleManager> bundleMgr = AddBundleManager();
    std::string pkgName = "unchanged";
    EXPECT_FALSE(adapter_->GetPkgNameByUid(12345, pkgName));
    IPCDriver::GetInstance().SetTransportFault(30, true);
    EXPECT_FALSE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(pkgName, "unchanged");
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "ZelBundleMgrAdapter::GetPkgNameByUid SendRequest error code 0",
                                            "ZelBundleMgrAdapter::GetPkgNameByUid SendRequest error code " +
                                                std::to_string(ERR_TRANSACTION_FAILED),
                                        }));
}

TEST_F(ZelBundleMgrAdapterTest, ConnectionIsRetriedOnEveryCallUntilTheBundleManagerAppears)
{
    std::string pkgName;
    EXPECT_FALSE(adapter_->ConnectService());
    EXPECT_FALSE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              std::vector<std::string>{"ZelBundleMgrAdapter::GetPkgNameByUid connect service faild."});
    AddBundleManager();
    EXPECT_TRUE(adapter_->GetPkgNameByUid(20010040, pkgName));
    EXPECT_EQ(pkgName, "com.game.alpha");

    // Without a service manager at all, a kept connection still answers.
    samgr_.Uninstall();
    EXPECT_TRUE(adapter_->ConnectService());
}

}  // namespace
}  // namespace Tarvo::Vantel
