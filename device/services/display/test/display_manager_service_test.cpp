#include "display_manager_service.h"

#include <gtest/gtest.h>

#include "display_manager.h"
#include "screen_manager.h"
#include "test_device_context.h"

namespace Tarvo::Emu::Test {
namespace {
using namespace Tarvo::Vantel;

class DisplayManagerServiceTest : public testing::Test {
protected:
    void SetUp() override { service_.Start(); }

    TestDeviceContext device_{TestDeviceContext::Clock::VIRTUAL};
    DisplayManagerService service_{device_};
    std::shared_ptr<VirtualProcess> client_ = device_.MakeClientProcess("zel_manager");
};

TEST_F(DisplayManagerServiceTest, OneDefaultDisplayOnOneScreenOfTheInitialSize)
{
    ScopedProcess scope(client_);
    EXPECT_EQ(DisplayManager::GetInstance().GetDefaultDisplayId(), 0u);
    auto screens = ScreenManager::GetInstance().GetAllScreens();
    ASSERT_EQ(screens.size(), 1u);
    EXPECT_EQ(screens[0]->GetId(), 0u);
    EXPECT_EQ(screens[0]->GetWidth(), 1260u);
    EXPECT_EQ(screens[0]->GetHeight(), 2720u);
    EXPECT_EQ(screens[0]->GetDensity(), 560u);
    EXPECT_EQ(ScreenManager::GetInstance().GetScreenById(1), nullptr);
}

TEST_F(DisplayManagerServiceTest, ResolutionOfAKnownScreenChangesItAndIsTraced)
{
    ScopedProcess scope(client_);
    sptr<Screen> screen = ScreenManager::GetInstance().GetScreenById(0);
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->SetResolution(1080, 2340, 480), DMError::DM_OK);
    sptr<Screen> changed = ScreenManager::GetInstance().GetScreenById(0);
    EXPECT_EQ(changed->GetWidth(), 1080u);
    EXPECT_EQ(changed->GetHeight(), 2340u);
    EXPECT_EQ(changed->GetDensity(), 480u);

    // Refused without an event: an unknown screen, a zero value.
    EXPECT_EQ(sptr<Screen>::MakeSptr(ScreenInfo{7, 1, 1, 1})->SetResolution(720, 1280, 320),
              DMError::DM_ERROR_INVALID_SCREEN);
    EXPECT_EQ(screen->SetResolution(720, 0, 320), DMError::DM_ERROR_INVALID_PARAM);
    EXPECT_EQ(ScreenManager::GetInstance().GetScreenById(0)->GetWidth(), 1080u);
    EXPECT_EQ(device_.TraceLines(),
              std::vector<std::string>{R"({"t":0,"ev":"screen.resolution","width":1080,"height":2340,"density":480})"});
}

}  // namespace
}  // namespace Tarvo::Emu::Test
