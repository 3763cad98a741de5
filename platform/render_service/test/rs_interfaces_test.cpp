#include "rs_interfaces.h"

#include <gtest/gtest.h>

#include <mutex>

#include "ipc_types.h"
#include "message_option.h"
#include "platform_test_support.h"
#include "render_service_stub.h"

namespace Tarvo::Vantel {
namespace {
using Test::MakeProcess;

std::string HexAfterToken(const MessageParcel& data)
{
    return Test::HexAfterToken(data, u"tarvo.rosen.RenderService");
}

// Where the render service would be: records each request whole.
class RecordingRenderService : public RenderServiceStub {
public:
    struct Request {
        uint32_t code;
        int flags;
        MessageParcel data;
    };
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        int status = RenderServiceStub::OnRemoteRequest(code, data, reply, option);
        if (status == ERR_NONE) {
            data.RewindRead(0);
            std::lock_guard<std::mutex> lock(mutex_);
            requests_.push_back({code, option.GetFlags(), data});
        }
        return status;
    }
    void NotifyPackageEvent(uint32_t, const std::vector<std::string>&) override {}
    void NotifyRefreshRateEvent(const EventInfo&) override {}
    void NotifyLightFactorStatus(bool) override {}

    std::vector<Request> Requests()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return requests_;
    }

private:
    std::mutex mutex_;
    std::vector<Request> requests_;
};

class RSInterfacesTest : public testing::Test {
protected:
    void SetUp() override
    {
        service_ = samgr_.AddAbility<RecordingRenderService>(IRenderService::RENDER_SERVICE_ID, renderProcess_);
    }

    std::shared_ptr<VirtualProcess> renderProcess_ = MakeProcess(20, "render_service");
    std::shared_ptr<VirtualProcess> clientProcess_ = MakeProcess(30, "client");
    sptr<RecordingRenderService> service_;
    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(RSInterfacesTest, EachNoticeIsOneSynchronousRequestWithItsFieldsInOrder)
{
    {
        ScopedProcess scope(clientProcess_);
        RSInterfaces::GetInstance().NotifyPackageEvent(3, {"com.a:0:-1"});
        RSInterfaces::GetInstance().NotifyRefreshRateEvent({"VOTER_SCENE", true, 0, 120, "X"});
        RSInterfaces::GetInstance().NotifyLightFactorStatus(true);
    }
    auto requests = service_->Requests();
    ASSERT_EQ(requests.size(), 3u);
    for (const auto& request : requests) {
        EXPECT_EQ(request.flags, MessageOption::TF_SYNC);
    }
    EXPECT_EQ(requests[0].code, 1u);
    EXPECT_EQ(HexAfterToken(requests[0].data),
              "03 00 00 00"                                                     // listSize as given
              " 01 00 00 00 0A 00 00 00 63 6F 6D 2E 61 3A 30 3A 2D 31 00 00");  // ["com.a:0:-1"]
    EXPECT_EQ(requests[1].code, 2u);
    EXPECT_EQ(HexAfterToken(requests[1].data),
              "0B 00 00 00 56 4F 54 45 52 5F 53 43 45 4E 45 00"  // "VOTER_SCENE"
              " 01 00 00 00 00 00 00 00 78 00 00 00"             // true, 0, 120
              " 01 00 00 00 58 00 00 00");                       // "X"
    EXPECT_EQ(requests[2].code, 3u);
    EXPECT_EQ(HexAfterToken(requests[2].data), "01 00 00 00");
}

TEST_F(RSInterfacesTest, StubRefusesForeignTokensAndTruncatedNotices)
{
    auto send = [this](uint32_t code, MessageParcel& data) {
        MessageParcel reply;
        MessageOption option;
        return service_->OnRemoteRequest(code, data, reply, option);
    };
    MessageParcel foreign;
    foreign.WriteInterfaceToken(u"tarvo.rosen.Other");
    foreign.WriteBool(true);
    EXPECT_EQ(send(IRenderService::NOTIFY_LIGHT_FACTOR_STATUS, foreign), ERR_INVALID_VALUE);
    MessageParcel cut;
    cut.WriteInterfaceToken(IRenderService::GetDescriptor());
    cut.WriteString("VOTER_SCENE");
    cut.WriteBool(true);
    EXPECT_EQ(send(IRenderService::NOTIFY_REFRESH_RATE_EVENT, cut), ERR_INVALID_VALUE);
    MessageParcel oversized;
    oversized.WriteInterfaceToken(IRenderService::GetDescriptor());
    oversized.WriteUint32(1);
    oversized.WriteInt32(1000);
    EXPECT_EQ(send(IRenderService::NOTIFY_PACKAGE_EVENT, oversized), ERR_INVALID_VALUE);
    EXPECT_TRUE(service_->Requests().empty());
}

TEST_F(RSInterfacesTest, NoticesAreDroppedWhileTheServiceCannotBeReached)
{
    ScopedProcess scope(clientProcess_);
    samgr_->RemoveSystemAbility(IRenderService::RENDER_SERVICE_ID);
    RSInterfaces::GetInstance().NotifyLightFactorStatus(false);
    samgr_->AddSystemAbility(IRenderService::RENDER_SERVICE_ID, service_);
    samgr_.Uninstall();
    RSInterfaces::GetInstance().NotifyLightFactorStatus(false);
    EXPECT_TRUE(service_->Requests().empty());
    // Found again once it is back.
    samgr_.Install();
    RSInterfaces::GetInstance().NotifyLightFactorStatus(true);
    ASSERT_EQ(service_->Requests().size(), 1u);
    EXPECT_EQ(HexAfterToken(service_->Requests()[0].data), "01 00 00 00");
}

}  // namespace
}  // namespace Tarvo::Vantel
