// The services that answer from the package catalogue, reached as the manager reaches them.
#include <gtest/gtest.h>

#include "app_category_service.h"
#include "bundle_manager_service.h"
#include "category_manager.h"
#include "component_sched_client.h"
#include "component_scheduler_service.h"
#include "ipc_types.h"
#include "test_device_context.h"

namespace Tarvo::Emu::Test {
namespace {
using QuillonServiceClient::AppCategoryInfo;
using QuillonServiceClient::CategoryManager;
using Tarvo::ComponentScheduler::ComponentSchedClient;
using Tarvo::Test::Hex;
using Tarvo::Test::ParcelFromHex;

std::vector<std::string> Text(const std::vector<AppCategoryInfo>& infos)
{
    std::vector<std::string> out;
    for (const auto& info : infos) {
        out.push_back(info.bundleName + ":" + std::to_string(info.packageType));
    }
    return out;
}

// Token "tarvo.appexecfwk.BundleMgr": 26 UTF-16 units, a 0 unit, 2 bytes of padding.
const std::string kBundleTokenHex =
    "1A 00 00 00 74 00 61 00 72 00 76 00 6F 00 2E 00 61 00 70 00 70 00 65 00 78 00 65 00 63 00 66 00 77 00 6B 00 "
    "2E 00 42 00 75 00 6E 00 64 00 6C 00 65 00 4D 00 67 00 72 00 00 00 00 00";

class CatalogServicesTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(ctx_.Catalog().Install({"com.game", 20020000, true, false, 3}, nullptr));
        ASSERT_TRUE(ctx_.Catalog().Install({"com.tool", 0, false, false, std::nullopt}, nullptr));
    }
    // A request from the manager's process, given as its bytes; the reply's bytes.
    int Send(int32_t id, uint32_t code, const std::string& requestHex, std::string* replyHex)
    {
        sptr<IRemoteObject> remote = ctx_.Obtain(id, caller_);
        if (remote == nullptr) {
            return -1;
        }
        ScopedProcess scope(caller_);
        MessageParcel data = ParcelFromHex(requestHex);
        MessageParcel reply;
        MessageOption option;
        int status = remote->SendRequest(code, data, reply, option);
        *replyHex = Hex(reply);
        return status;
    }

    TestDeviceContext ctx_;
    std::shared_ptr<VirtualProcess> caller_ = ctx_.MakeServiceProcess("zel_manager");
};

TEST_F(CatalogServicesTest, BundleManagerNamesTheBundleOfAUidInItsWireFormat)
{
    BundleManagerService service(ctx_);
    service.Start();
    std::string reply;
    EXPECT_EQ(Send(401, 9, kBundleTokenHex + " 20 7B 31 01", &reply), ERR_NONE);      // uid 20020000
    EXPECT_EQ(reply, "00 00 00 00 08 00 00 00 63 6F 6D 2E 67 61 6D 65 00 00 00 00");  // 0, "com.game"
    EXPECT_EQ(Send(401, 9, kBundleTokenHex + " 05 00 00 00", &reply), ERR_NONE);
    EXPECT_EQ(reply, "01 00 00 00");  // unknown uid: a result only

    // Refused without a reply: a foreign token, a missing uid.
    EXPECT_NE(Send(401, 9, "01 00 00 00 41 00 00 00 20 7B 31 01", &reply), ERR_NONE);
    EXPECT_EQ(reply, "");
    EXPECT_NE(Send(401, 9, kBundleTokenHex, &reply), ERR_NONE);
    EXPECT_EQ(reply, "");
}

TEST_F(CatalogServicesTest, CategoryServiceClassifiesRequestedOrAllPackagesUnlessDown)
{
    AppCategoryService service(ctx_);
    std::vector<std::string> none;
    std::vector<AppCategoryInfo> infos;
    EXPECT_NE(CategoryManager::GetCategoryFromSystem(none, infos, "zel"), 0);  // not started

    service.Start();
    ScopedProcess scope(caller_);
    ASSERT_EQ(CategoryManager::GetCategoryFromSystem(none, infos, "zel"), 0);
    EXPECT_EQ(Text(infos),
              (std::vector<std::string>{"com.game:2", "com.tarvo.systemui:1", "com.tarvo.vistadeck:1", "com.tool:1"}));
    std::vector<std::string> some = {"com.tool", "com.unknown", "com.game"};
    ASSERT_EQ(CategoryManager::GetCategoryFromSystem(some, infos, "zel"), 0);
    EXPECT_EQ(Text(infos), (std::vector<std::string>{"com.tool:1", "com.game:2"}));

    service.SetUp(false);
    EXPECT_NE(CategoryManager::GetCategoryFromSystem(some, infos, "zel"), 0);
    EXPECT_EQ(infos.size(), 2u);  // untouched
    service.SetUp(true);
    EXPECT_EQ(CategoryManager::GetCategoryFromSystem(some, infos, "zel"), 0);
}

TEST_F(CatalogServicesTest, SchedulerReportsASetTypeAndNothingElse)
{
    ComponentSchedulerService service(ctx_);
    ScopedProcess scope(caller_);
    int type = 99;
    EXPECT_NE(ComponentSchedClient::GetInstance().GetApptype("com.game", type), 0);  // not started
    EXPECT_EQ(type, 99);
    service.Start();
    EXPECT_EQ(ComponentSchedClient::GetInstance().GetApptype("com.game", type), 0);
    EXPECT_EQ(type, 3);
    EXPECT_NE(ComponentSchedClient::GetInstance().GetApptype("com.tool", type), 0);
    EXPECT_NE(ComponentSchedClient::GetInstance().GetApptype("com.unknown", type), 0);
    EXPECT_EQ(type, 3);
}

}  // namespace
}  // namespace Tarvo::Emu::Test
