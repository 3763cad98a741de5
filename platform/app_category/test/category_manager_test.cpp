// The client's side of the app-category wire format, against a scripted service.
#include "category_manager.h"

#include <gtest/gtest.h>

#include <functional>

#include "app_category_interface.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace QuillonServiceClient {
namespace {
using namespace Tarvo;

// Checks the request and answers with a scripted reply.
class ScriptedCategoryService : public IPCObjectStub {
public:
    ScriptedCategoryService() : IPCObjectStub(APP_CATEGORY_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        std::vector<std::string> bundles;
        if (code != GET_CATEGORY || data.ReadInterfaceToken() != APP_CATEGORY_DESCRIPTOR ||
            !data.ReadStringVector(&bundles) || bundles != std::vector<std::string>{"com.a"} ||
            data.ReadString() != "zel" || data.GetReadableBytes() != 0) {
            return ERR_INVALID_VALUE;
        }
        answer(reply);
        return ERR_NONE;
    }
    std::function<void(MessageParcel&)> answer;
};

class CategoryManagerTest : public testing::Test {
protected:
    int32_t Ask() { return CategoryManager::GetCategoryFromSystem(bundles_, infos_, "zel"); }

    // Made in the test's own process, installed only once the test says so.
    Tarvo::Test::ScopedServiceManager samgr_{nullptr, false};
    sptr<ScriptedCategoryService> service_ = new ScriptedCategoryService();
    std::vector<std::string> bundles_ = {"com.a"};
    std::vector<AppCategoryInfo> infos_ = {AppCategoryInfo("old", 1)};
};

TEST_F(CategoryManagerTest, ReadsOnlyWhatTheReplyHoldsAndLeavesTheAnswerAloneOnFailure)
{
    EXPECT_EQ(Ask(), CATEGORY_ERR_UNAVAILABLE);  // no service manager
    samgr_.Install();
    EXPECT_EQ(Ask(), CATEGORY_ERR_UNAVAILABLE);  // no category service
    samgr_->AddSystemAbility(APP_CATEGORY_SA_ID, service_);
    service_->answer = [](MessageParcel& reply) { reply.WriteInt32(CATEGORY_ERR_SERVICE_DOWN); };
    EXPECT_EQ(Ask(), CATEGORY_ERR_SERVICE_DOWN);
    service_->answer = [](MessageParcel& reply) {
        reply.WriteInt32(CATEGORY_OK);
        reply.WriteInt32(1000000);  // more entries than bytes
    };
    EXPECT_EQ(Ask(), CATEGORY_ERR_BAD_REPLY);
    service_->answer = [](MessageParcel& reply) {
        reply.WriteInt32(CATEGORY_OK);
        reply.WriteInt32(2);
        AppCategoryInfo("com.b", PACKAGE_TYPE_APP).Marshalling(reply);
        reply.WriteInt32(5);  // a truncated second entry
    };
    EXPECT_EQ(Ask(), CATEGORY_ERR_BAD_REPLY);
    ASSERT_EQ(infos_.size(), 1u);
    EXPECT_EQ(infos_[0].bundleName, "old");

    service_->answer = [](MessageParcel& reply) {
        reply.WriteInt32(CATEGORY_OK);
        reply.WriteInt32(1);
        AppCategoryInfo("com.a", PACKAGE_TYPE_GAME).Marshalling(reply);
    };
    ASSERT_EQ(Ask(), CATEGORY_OK);
    ASSERT_EQ(infos_.size(), 1u);
    EXPECT_EQ(infos_[0].bundleName, "com.a");
    EXPECT_EQ(infos_[0].packageType, PACKAGE_TYPE_GAME);
}

}  // namespace
}  // namespace QuillonServiceClient
