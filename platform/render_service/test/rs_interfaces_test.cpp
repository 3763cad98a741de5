#include "rs_interfaces.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>

#include "ipc_skeleton.h"
#include "ipc_types.h"
#include "message_option.h"
#include "render_service_stub.h"
#include "system_ability_manager.h"

namespace Tarvo::Vantel {
namespace {

std::shared_ptr<VirtualProcess> MakeProcess(int32_t pid, const std::string& name)
{
    return VirtualProcess::Create({pid, pid, 1u << 28, 1u << 28, name});
}

// The bytes after the interface token, as the wire carries them.
std::string HexAfterToken(MessageParcel data)
{
    if (data.ReadInterfaceToken() != u"tarvo.rosen.RenderService") {
        return "bad token";
    }
    std::string out;
    char byte[4];
    for (size_t i = data.GetReadPosition(); i < data.GetDataSize(); ++i) {
        snprintf(byte, sizeof(byte), out.empty() ? "%02X" : " %02X", data.GetData()[i]);
        out += byte;
    }
    return out;
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
        {
            ScopedProcess scope(samgrProcess_);
            registry_ = new SystemAbilityManager();
        }
        IPCSkeleton::SetContextObject(registry_);
        ScopedProcess scope(renderProcess_);
        service_ = new RecordingRenderService();
        registry_->AddSystemAbility(IRenderService::RENDER_SERVICE_ID, service_);
    }
    void TearDown() override { IPCSkeleton::SetContextObject(nullptr); }

    std::shared_ptr<VirtualProcess> samgrProcess_ = MakeProcess(10, "samgr");
    std::shared_ptr<VirtualProcess> renderProcess_ = MakeProcess(20, "render_service");
    std::shared_ptr<VirtualProcess> clientProcess_ = MakeProcess(30, "client");
    sptr<SystemAbilityManager> registry_;
    sptr<RecordingRenderService> service_;
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
    registry_->RemoveSystemAbility(IRenderService::RENDER_SERVICE_ID);
    RSInterfaces::GetInstance().NotifyLightFactorStatus(false);
    registry_->AddSystemAbility(IRenderService::RENDER_SERVICE_ID, service_);
    IPCSkeleton::SetContextObject(nullptr);
    RSInterfaces::GetInstance().NotifyLightFactorStatus(false);
    EXPECT_TRUE(service_->Requests().empty());
    // Found again once it is back.
    IPCSkeleton::SetContextObject(registry_);
    RSInterfaces::GetInstance().NotifyLightFactorStatus(true);
    ASSERT_EQ(service_->Requests().size(), 1u);
    EXPECT_EQ(HexAfterToken(service_->Requests()[0].data), "01 00 00 00");
}

}  // namespace
}  // namespace Tarvo::Vantel
