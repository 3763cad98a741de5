#include "display_manager.h"

#include <gtest/gtest.h>

#include <map>
#include <mutex>

#include "display_manager_service_stub.h"
#include "ipc_transport.h"
#include "ipc_types.h"
#include "message_option.h"
#include "platform_test_support.h"
#include "screen_manager.h"

namespace Tarvo::Vantel {
namespace {
using Test::MakeProcess;

std::string HexAfterToken(const MessageParcel& data)
{
    return Test::HexAfterToken(data, u"tarvo.rosen.DisplayManager");
}

// A display manager with two screens that answers every resolution with `result` and keeps the
// last request's bytes.
class FakeDisplayManagerService : public DisplayManagerServiceStub {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            lastRequest_ = data;
        }
        return DisplayManagerServiceStub::OnRemoteRequest(code, data, reply, option);
    }
    DisplayId GetDefaultDisplayId() override { return 3; }
    std::optional<ScreenInfo> GetScreenInfo(ScreenId screenId) override
    {
        auto it = screens_.find(screenId);
        return it != screens_.end() ? std::optional<ScreenInfo>(it->second) : std::nullopt;
    }
    std::vector<ScreenInfo> GetAllScreenInfos() override { return {screens_.at(3), screens_.at(9)}; }
    DMError SetResolution(ScreenId, uint32_t, uint32_t, uint32_t) override { return DMError::DM_ERROR_INVALID_PARAM; }

    MessageParcel LastRequest()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return lastRequest_;
    }

private:
    const std::map<ScreenId, ScreenInfo> screens_ = {{3, {3, 1260, 2720, 560}}, {9, {9, 720, 1280, 320}}};
    std::mutex mutex_;
    MessageParcel lastRequest_;
};

class DisplayManagerTest : public testing::Test {
protected:
    void SetUp() override
    {
        service_ = samgr_.AddAbility<FakeDisplayManagerService>(IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID,
                                                                serviceProcess_);
    }

    std::shared_ptr<VirtualProcess> serviceProcess_ = MakeProcess(20, "display_manager");
    std::shared_ptr<VirtualProcess> clientProcess_ = MakeProcess(30, "client");
    sptr<FakeDisplayManagerService> service_;
    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(DisplayManagerTest, DisplaysAndScreensComeFromTheServiceOfAnotherProcess)
{
    ScopedProcess scope(clientProcess_);
    EXPECT_EQ(DisplayManager::GetInstance().GetDefaultDisplayId(), 3u);
    sptr<Screen> screen = ScreenManager::GetInstance().GetScreenById(3);
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->GetId(), 3u);
    EXPECT_EQ(screen->GetWidth(), 1260u);
    EXPECT_EQ(screen->GetHeight(), 2720u);
    EXPECT_EQ(screen->GetDensity(), 560u);
    EXPECT_EQ(ScreenManager::GetInstance().GetScreenById(4), nullptr);
    auto all = ScreenManager::GetInstance().GetAllScreens();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]->GetId(), 3u);
    EXPECT_EQ(all[1]->GetWidth(), 720u);

    // The service's own error comes back as it is.
    EXPECT_EQ(all[1]->SetResolution(1080, 2400, 480), DMError::DM_ERROR_INVALID_PARAM);
    EXPECT_EQ(HexAfterToken(service_->LastRequest()),
              "09 00 00 00 00 00 00 00"                 // screen id 9
              " 38 04 00 00 60 09 00 00 E0 01 00 00");  // 1080, 2400, 480
}

TEST_F(DisplayManagerTest, UnreachableServiceGivesInvalidIdNoScreensAndAnError)
{
    ScopedProcess scope(clientProcess_);
    sptr<Screen> screen = ScreenManager::GetInstance().GetScreenById(3);
    ASSERT_NE(screen, nullptr);
    samgr_->RemoveSystemAbility(IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID);
    EXPECT_EQ(DisplayManager::GetInstance().GetDefaultDisplayId(), DISPLAY_ID_INVALID);
    EXPECT_EQ(ScreenManager::GetInstance().GetScreenById(3), nullptr);
    EXPECT_TRUE(ScreenManager::GetInstance().GetAllScreens().empty());
    EXPECT_EQ(screen->SetResolution(1, 1, 1), DMError::DM_ERROR_NULLPTR);

    // Published, but the transport to its process fails: the request itself fails.
    samgr_->AddSystemAbility(IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID, service_);
    IPCTransport::Get().SetTransportFault(serviceProcess_->Pid(), true);
    EXPECT_EQ(screen->SetResolution(1, 1, 1), DMError::DM_ERROR_IPC_FAILED);
    EXPECT_EQ(DisplayManager::GetInstance().GetDefaultDisplayId(), DISPLAY_ID_INVALID);
    EXPECT_EQ(ScreenManager::GetInstance().GetScreenById(3), nullptr);
    IPCTransport::Get().SetTransportFault(serviceProcess_->Pid(), false);
}

TEST_F(DisplayManagerTest, StubRefusesForeignTokensAndTruncatedRequests)
{
    auto send = [this](uint32_t code, MessageParcel& data, MessageParcel& reply) {
        MessageOption option;
        return service_->OnRemoteRequest(code, data, reply, option);
    };
    MessageParcel reply;
    MessageParcel foreign;
    foreign.WriteInterfaceToken(u"tarvo.rosen.Other");
    EXPECT_EQ(send(IDisplayManagerService::GET_DEFAULT_DISPLAY_ID, foreign, reply), ERR_INVALID_VALUE);
    MessageParcel cut;
    cut.WriteInterfaceToken(IDisplayManagerService::GetDescriptor());
    cut.WriteUint64(3);
    cut.WriteUint32(1080);
    EXPECT_EQ(send(IDisplayManagerService::SET_RESOLUTION, cut, reply), ERR_INVALID_VALUE);
    EXPECT_EQ(reply.GetDataSize(), 0u);
    // A screen's fields are read whole or not at all.
    Parcel partial;
    partial.WriteUint64(3);
    partial.WriteUint32(1260);
    ScreenInfo info;
    EXPECT_FALSE(ScreenInfo::Unmarshalling(partial, info));
    EXPECT_EQ(partial.GetReadPosition(), 0u);
}

}  // namespace
}  // namespace Tarvo::Vantel
