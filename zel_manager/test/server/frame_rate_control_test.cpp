// Scenes and the foreground package as the frame-rate arbiter hears them, in virtual time.
#include "frame_rate_control.h"

#include <gtest/gtest.h>

#include <mutex>

#include "component_sched_interface.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "platform_test_support.h"
#include "recording_render_service.h"
#include "virtual_clock.h"

namespace Tarvo::Vantel {
namespace {
using Test::RecordingRenderService;
using namespace std::chrono_literals;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LOG_WARN;
using Strings = std::vector<std::string>;

const std::string kStopFreezing = "FrameRateControl removeSceneInfo stop freezing scene for scene";
const std::string kParked = "FrameRateControl NotifyPkgNameChange, cat't chane pkg, please wait";

// The component scheduler, knowing the type of the desktop only.
class DesktopTypeScheduler : public IPCObjectStub {
public:
    DesktopTypeScheduler() : IPCObjectStub(ComponentScheduler::COMPONENT_SCHED_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        data.ReadInterfaceToken();
        if (data.ReadString() != "com.tarvo.vistadeck") {
            reply.WriteInt32(ComponentScheduler::COMPONENT_SCHED_ERR_NOT_FOUND);
            return 0;
        }
        reply.WriteInt32(ComponentScheduler::COMPONENT_SCHED_OK);
        reply.WriteInt32(3);
        return 0;
    }
};
}  // namespace

class FrameRateControlTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();  // before the task queue's runner exists
        start_ = PlatformClock::now();
        arbiter_ = samgr_.AddAbility<RecordingRenderService>(IRenderService::RENDER_SERVICE_ID, renderProcess_);
        FrameRateControl::SetBasicSceneAttributes("START_APP", "0");
        FrameRateControl::SetBasicSceneAttributes("CLOSE_APP", "0");
        FrameRateControl::SetBasicSceneAttributes("SLIDE_LIST", "1");
        FrameRateControl::SetBasicSceneAttributes("SCROLL_PAGE", "1");
        FrameRateControl::SetBasicSceneAttributes("FOLLOW_HAND", "0");
        FrameRateControl::SetBasicSceneAttributes("BACK_ORIGIN_APP", "0");
        FrameRateControl::SetBasicSceneAttributes("BACK_DESKTOP", "0");
        control_ = FrameRateControl::GetInstance();
    }

    void Enter(const std::string& scene) { control_->SetScene("com.tarvo.systemui", scene, 1); }
    void Exit(const std::string& scene, int32_t state = 0) { control_->SetScene("com.tarvo.systemui", scene, state); }
    // As the foreground observer calls it.
    void Foreground(const std::string& pkgName)
    {
        std::lock_guard<std::recursive_mutex> lock(control_->sceneLock);
        control_->NotifyPkgChange(pkgName);
    }
    void RunUntil(int64_t ms) { ASSERT_TRUE(VirtualClock::AdvanceTo(start_ + std::chrono::milliseconds(ms))); }

    std::shared_ptr<VirtualProcess> renderProcess_ = Tarvo::Test::MakeProcess(20, "render_service");
    Tarvo::Test::ScopedServiceManager samgr_;
    sptr<RecordingRenderService> arbiter_;
    sptr<FrameRateControl> control_;
    PlatformClock::time_point start_;
    HiviewDFX::LogCapture log_;
};

namespace {
std::string On(const std::string& scene)
{
    return "VOTER_SCENE on 0-0 " + scene;
}
std::string Off(const std::string& scene)
{
    return "VOTER_SCENE off 0-0 " + scene;
}
std::string Pkg(const std::string& pkgName)
{
    return "pkg 1 " + pkgName + ":0:-1";
}
}  // namespace

TEST_F(FrameRateControlTest, WaitingScenesArePromotedOldestFirstEachWithAFreshTimeOut)
{
    Enter("START_APP");
    Enter("CLOSE_APP");
    Enter("SLIDE_LIST");
    Enter("CLOSE_APP");  // counted in the queue
    EXPECT_EQ(arbiter_->Take(), Strings{On("START_APP")});

    RunUntil(1000);
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), (Strings{Off("START_APP"), On("CLOSE_APP")}));

    RunUntil(3999);  // the first time-out was withdrawn; the new one is due at 4000
    EXPECT_TRUE(arbiter_->Take().empty());
    RunUntil(4000);  // ends CLOSE_APP whatever its count
    EXPECT_EQ(arbiter_->Take(), (Strings{Off("CLOSE_APP"), On("SLIDE_LIST")}));
    EXPECT_EQ(log_.Count(LOG_INFO, kStopFreezing), 2u);

    RunUntil(10000);  // interruptible scenes have no time-out
    EXPECT_TRUE(arbiter_->Take().empty());
    Exit("SLIDE_LIST");
    EXPECT_EQ(arbiter_->Take(), Strings{Off("SLIDE_LIST")});
    EXPECT_EQ(log_.Count(LOG_INFO, kStopFreezing), 2u);
}

TEST_F(FrameRateControlTest, RepeatedEntersNeedAsManyExitsOrOneForcedExit)
{
    Enter("START_APP");
    Enter("START_APP");
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), Strings{On("START_APP")});
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), Strings{Off("START_APP")});

    Enter("SLIDE_LIST");
    Enter("SLIDE_LIST");
    Enter("SLIDE_LIST");
    Exit("SLIDE_LIST", 2);
    EXPECT_EQ(arbiter_->Take(), (Strings{On("SLIDE_LIST"), Off("SLIDE_LIST")}));
}

TEST_F(FrameRateControlTest, UnknownScenesAndStatesChangeNothing)
{
    Enter("NOT_CONFIGURED");
    Enter("START_APP");
    control_->SetScene("com.tarvo.systemui", "START_APP", 3);
    EXPECT_EQ(arbiter_->Take(), Strings{On("START_APP")});
    EXPECT_EQ(log_.Messages(LOG_WARN), (Strings{"FrameRateControl findSceneInfo not exists scene",
                                                "FrameRateControl removeSceneInfo: unknow scene!",
                                                "FrameRateControl removeSceneInfo: unknow state!"}));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "SetScene pkgName = com.tarvo.systemui, scene = START_APP, state = 3"));
}

TEST_F(FrameRateControlTest, AFreezingSceneWithoutExitEndsAfter3000msCountedFromItsLastEnter)
{
    Enter("START_APP");
    RunUntil(2000);
    Enter("START_APP");  // restarts the wait
    RunUntil(4999);
    EXPECT_EQ(arbiter_->Take(), Strings{On("START_APP")});
    RunUntil(5000);
    EXPECT_EQ(arbiter_->Take(), Strings{Off("START_APP")});
    EXPECT_EQ(log_.Count(LOG_INFO, kStopFreezing), 1u);

    // Ended, not merely lowered: the next enter begins it again.
    Enter("START_APP");
    EXPECT_EQ(arbiter_->Take(), Strings{On("START_APP")});
}

TEST_F(FrameRateControlTest, ExitsOfWaitingOrAbsentScenesSendNothing)
{
    Enter("START_APP");
    Enter("CLOSE_APP");
    Enter("CLOSE_APP");
    Exit("CLOSE_APP");  // one enter left
    Exit("CLOSE_APP");  // leaves the queue
    Exit("CLOSE_APP");
    Exit("SCROLL_PAGE");
    EXPECT_EQ(log_.Count(LOG_INFO,
                         "FrameRateControl removeSceneInfo current scene is non-interruption, remove from wait queue"),
              2u);
    EXPECT_EQ(
        log_.Messages(LOG_WARN),
        (Strings{"FrameRateControl removeSceneInfoFromWaitQueue: receive CLOSE_APP scene exit before scene in",
                 "FrameRateControl removeSceneInfoFromWaitQueue: receive SCROLL_PAGE scene exit before scene in"}));

    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), (Strings{On("START_APP"), Off("START_APP")}));
}

TEST_F(FrameRateControlTest, InterruptibleScenesOverlapAndEndingTheOlderKeepsTheNewerCurrent)
{
    Enter("SLIDE_LIST");
    Enter("SCROLL_PAGE");
    Exit("SLIDE_LIST");
    EXPECT_EQ(arbiter_->Take(), (Strings{On("SLIDE_LIST"), On("SCROLL_PAGE"), Off("SLIDE_LIST")}));

    Enter("SCROLL_PAGE");  // still active: only counted
    Exit("SCROLL_PAGE");
    EXPECT_TRUE(arbiter_->Take().empty());
    // A freezing scene may overlap an interruptible one, not the other way round.
    Enter("START_APP");
    Enter("SLIDE_LIST");
    Exit("SCROLL_PAGE");
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), (Strings{On("START_APP"), Off("SCROLL_PAGE"), Off("START_APP"), On("SLIDE_LIST")}));
    EXPECT_EQ(log_.Count(LOG_INFO, kStopFreezing), 1u);
}

TEST_F(FrameRateControlTest, FollowHandShowsTheDesktopAndOnlyBackOriginAppRestoresTheFormerForeground)
{
    samgr_.AddAbility<DesktopTypeScheduler>(ComponentScheduler::COMPONENT_SCHED_SA_ID, renderProcess_);
    Foreground("com.example.mail");
    Enter("SLIDE_LIST");
    Enter("FOLLOW_HAND");
    EXPECT_EQ(arbiter_->Take(),
              (Strings{Pkg("com.example.mail"), On("SLIDE_LIST"), "pkg 1 com.tarvo.vistadeck:0:3", On("FOLLOW_HAND")}));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "bundleName:com.example.mail,pkgType:-1"));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "bundleName:com.tarvo.vistadeck,pkgType:3"));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "FrameRateControl send pkg = com.tarvo.vistadeck to MOX success"));

    Exit("FOLLOW_HAND");
    Exit("SLIDE_LIST");  // dropped silently by the switch to the desktop
    EXPECT_EQ(arbiter_->Take(), Strings{Off("FOLLOW_HAND")});

    Enter("BACK_ORIGIN_APP");  // already on the desktop: no switch
    Exit("BACK_ORIGIN_APP");
    EXPECT_EQ(arbiter_->Take(),
              (Strings{On("START_APP_ANIMATION"), Off("START_APP_ANIMATION"), Pkg("com.example.mail")}));

    // Once restored, the origin is spent.
    Enter("BACK_ORIGIN_APP");
    Exit("BACK_ORIGIN_APP");
    EXPECT_EQ(arbiter_->Take(), (Strings{On("START_APP_ANIMATION"), Off("START_APP_ANIMATION")}));
}

TEST_F(FrameRateControlTest, ForegroundChangesDuringAFreezingSceneWaitForItsEndAndOnlyTheLatestIsSent)
{
    Foreground("com.example.mail");
    Foreground("com.example.mail");
    Enter("START_APP");
    Foreground("com.example.maps");
    Foreground("com.example.music");
    EXPECT_EQ(log_.Count(LOG_INFO, kParked), 2u);
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(),
              (Strings{Pkg("com.example.mail"), On("START_APP"), Off("START_APP"), Pkg("com.example.music")}));

    // The parked package is kept and offered again at the next end, then dropped as a repeat.
    Enter("START_APP");
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(), (Strings{On("START_APP"), Off("START_APP")}));
    EXPECT_EQ(log_.Count(LOG_INFO, "FrameRateControl NotifyPkgChange pkgName repeat."), 2u);

    // BACK_DESKTOP forgets a parked package; its own desktop switch is parked behind START_APP.
    Enter("START_APP");
    Foreground("com.example.maps");
    Enter("BACK_DESKTOP");
    Exit("START_APP");
    EXPECT_EQ(arbiter_->Take(),
              (Strings{On("START_APP"), Off("START_APP"), Pkg("com.tarvo.vistadeck"), On("BACK_APP_ANIMATION")}));
}

}  // namespace Tarvo::Vantel
