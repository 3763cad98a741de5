// What the frame-rate arbiter receives from the service, as the render service decodes it.
#include "zel_mox_adapter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>

#include "hilog.h"
#include "platform_test_support.h"
#include "render_service_stub.h"
#include "virtual_process.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_INFO;
using testing::ElementsAre;
using testing::IsEmpty;

// Stands where the render service would be; keeps each notice as one line of text.
class RecordingRenderService : public RenderServiceStub {
public:
    void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList) override
    {
        std::string line = "package " + std::to_string(listSize);
        for (const auto& pkg : packageList) {
            line += " " + pkg;
        }
        Add(line);
    }
    void NotifyRefreshRateEvent(const EventInfo& info) override
    {
        Add("rate " + info.eventName + " " + std::to_string(info.eventStatus) + " " +
            std::to_string(info.minRefreshRate) + " " + std::to_string(info.maxRefreshRate) + " [" + info.description +
            "]");
    }
    void NotifyLightFactorStatus(bool isSafe) override { Add("light " + std::to_string(isSafe)); }

    std::vector<std::string> Notices()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return notices_;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        notices_.clear();
    }

private:
    void Add(const std::string& line)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        notices_.push_back(line);
    }

    std::mutex mutex_;
    std::vector<std::string> notices_;
};

class ZelMoxAdapterTest : public testing::Test {
protected:
    void SetUp() override
    {
        render_ = samgr_.AddAbility<RecordingRenderService>(IRenderService::RENDER_SERVICE_ID, renderProcess_);
    }

    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> renderProcess_ = Tarvo::Test::MakeProcess(20, "render_service");
    std::shared_ptr<VirtualProcess> service_ = Tarvo::Test::MakeProcess(30, "zel_manager");
    ScopedProcess scope_{service_};
    sptr<RecordingRenderService> render_;
    HiviewDFX::LogCapture log_;
};

TEST_F(ZelMoxAdapterTest, ForegroundPackagesAreSentInOneNoticeAndAnEmptyListIsNotSent)
{
    ZelMoxAdapter* adapter = ZelMoxAdapter::GetInstance();
    EXPECT_EQ(adapter, ZelMoxAdapter::GetInstance());

    adapter->SendPkgToMOX({"com.example.racer:10020:2"});
    adapter->SendPkgToMOX({"com.a:1:0", "com.b:2:1"});
    adapter->SendPkgToMOX({});

    EXPECT_THAT(render_->Notices(),
                ElementsAre("package 1 com.example.racer:10020:2", "package 2 com.a:1:0 com.b:2:1"));
    EXPECT_THAT(log_.Messages(LOG_INFO), ElementsAre("ZelMoxAdapter SendPkgToMOX pkgName = com.example.racer:10020:2",
                                                     "ZelMoxAdapter SendPkgToMOX pkgName = com.a:1:0",
                                                     "ZelMoxAdapter SendPkgToMOX no pkgName send."));
}

TEST_F(ZelMoxAdapterTest, ScenesVoteUnderTheSceneVoterWithOnlyTheAliasedNamesTranslated)
{
    EXPECT_THAT(ZelMoxAdapter::GetSceneAliases(),
                ElementsAre(std::pair<const std::string, std::string>("BACK_DESKTOP", "BACK_APP_ANIMATION"),
                            std::pair<const std::string, std::string>("BACK_MULTIPLE_TASKBARS", "BACK_APP_ANIMATION"),
                            std::pair<const std::string, std::string>("BACK_ORIGIN_APP", "START_APP_ANIMATION"),
                            std::pair<const std::string, std::string>("START_APP_FROM_MULTIPLE_TASKBARS",
                                                                      "START_APP_ANIMATION")));
    ZelMoxAdapter* adapter = ZelMoxAdapter::GetInstance();

    adapter->SendSceneInfoToMOX("BACK_DESKTOP", true);
    adapter->SendSceneInfoToMOX("BACK_MULTIPLE_TASKBARS", false);
    adapter->SendSceneInfoToMOX("BACK_ORIGIN_APP", true);
    adapter->SendSceneInfoToMOX("START_APP_FROM_MULTIPLE_TASKBARS", false);
    adapter->SendSceneInfoToMOX("FOLLOW_HAND", true);
    adapter->SendSceneInfoToMOX("BACK_APP_ANIMATION", false);  // already the arbiter's name

    EXPECT_THAT(
        render_->Notices(),
        ElementsAre("rate VOTER_SCENE 1 0 0 [BACK_APP_ANIMATION]", "rate VOTER_SCENE 0 0 0 [BACK_APP_ANIMATION]",
                    "rate VOTER_SCENE 1 0 0 [START_APP_ANIMATION]", "rate VOTER_SCENE 0 0 0 [START_APP_ANIMATION]",
                    "rate VOTER_SCENE 1 0 0 [FOLLOW_HAND]", "rate VOTER_SCENE 0 0 0 [BACK_APP_ANIMATION]"));
    EXPECT_THAT(log_.Messages(LOG_INFO),
                ElementsAre("ZelMoxAdapter SendSceneInfoToMOX sceneName = BACK_APP_ANIMATION, state = 1",
                            "ZelMoxAdapter SendSceneInfoToMOX sceneName = BACK_APP_ANIMATION, state = 0",
                            "ZelMoxAdapter SendSceneInfoToMOX sceneName = START_APP_ANIMATION, state = 1",
                            "ZelMoxAdapter SendSceneInfoToMOX sceneName = START_APP_ANIMATION, state = 0",
                            "ZelMoxAdapter SendSceneInfoToMOX sceneName = FOLLOW_HAND, state = 1",
                            "ZelMoxAdapter SendSceneInfoToMOX sceneName = BACK_APP_ANIMATION, state = 0"));
}

TEST_F(ZelMoxAdapterTest, PowerModeVotesAreIndistinguishableFromThermalVotesAtTheArbiter)
{
    ZelMoxAdapter* adapter = ZelMoxAdapter::GetInstance();

    adapter->SendPowerToMOX(3, true);
    adapter->SendThermForceRateFrameToMOX(3, true);
    adapter->SendThermForceRateFrameToMOX(90, false);
    adapter->SendPowerToMOX(120, false);

    EXPECT_THAT(render_->Notices(), ElementsAre("rate VOTER_THERMAL 1 0 3 []", "rate VOTER_THERMAL 1 0 3 []",
                                                "rate VOTER_THERMAL 0 0 90 []", "rate VOTER_THERMAL 0 0 120 []"));
    EXPECT_THAT(log_.Messages(LOG_INFO), ElementsAre("ZelMoxAdapter SendPowerToMOX state = 1",
                                                     "ZelMoxAdapter SendThermForceRateFrameToMOX value = 3, state = 1",
                                                     "ZelMoxAdapter SendThermForceRateFrameToMOX value = 90, state = 0",
                                                     "ZelMoxAdapter SendPowerToMOX state = 0"));
}

TEST_F(ZelMoxAdapterTest, LightFactorStatusIsForwardedAsGivenAndAMissingRenderServiceIsNoFailure)
{
    ZelMoxAdapter* adapter = ZelMoxAdapter::GetInstance();

    adapter->SetLightFactorStatus(true);
    adapter->SetLightFactorStatus(false);
    EXPECT_THAT(render_->Notices(), ElementsAre("light 1", "light 0"));

    // Fire-and-forget: without the render service the notice is dropped, the line still logged.
    render_->Clear();
    samgr_->RemoveSystemAbility(IRenderService::RENDER_SERVICE_ID);
    adapter->SendSceneInfoToMOX("S_DDN", true);
    EXPECT_THAT(render_->Notices(), IsEmpty());
    EXPECT_THAT(log_.Messages(LOG_INFO), ElementsAre("ZelMoxAdapter SetLightFactorStatus success ,state = 1",
                                                     "ZelMoxAdapter SetLightFactorStatus success ,state = 0",
                                                     "ZelMoxAdapter SendSceneInfoToMOX sceneName = S_DDN, state = 1"));
}

}  // namespace
}  // namespace Tarvo::Vantel
