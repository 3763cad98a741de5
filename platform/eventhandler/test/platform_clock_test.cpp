#include "platform_clock.h"

#include <gtest/gtest.h>

#include <future>

#include "event_handler.h"
#include "event_runner.h"

namespace Tarvo {
namespace {
using namespace std::chrono_literals;
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;

static_assert(std::chrono::is_clock_v<PlatformClock>);

class PlatformClockTest : public testing::Test {
protected:
    void SetUp() override
    {
        // Virtual time cannot be switched off; ctest gives every test a process of its own.
        if (PlatformClock::IsVirtual()) {
            GTEST_SKIP() << "virtual time already installed in this process";
        }
    }
};

TEST_F(PlatformClockTest, RealModeRunsADelayedTaskOnTheSteadyClock)
{
    auto runner = EventRunner::Create("real_clock");
    auto handler = std::make_shared<EventHandler>(runner);
    std::promise<PlatformClock::time_point> ran;
    const auto posted = PlatformClock::now();
    ASSERT_TRUE(handler->PostTask([&ran] { ran.set_value(PlatformClock::now()); }, "tiny", 5));

    auto future = ran.get_future();
    ASSERT_EQ(future.wait_for(10s), std::future_status::ready);
    EXPECT_GE(future.get() - posted, 5ms);
    EXPECT_FALSE(PlatformClock::IsVirtual());
}

TEST_F(PlatformClockTest, RealInstantsOfPlatformTimesKeepTheirDistances)
{
    const PlatformClock::time_point start{};
    EXPECT_EQ(PlatformClock::RealTimeOf(start + 7ms) - PlatformClock::RealTimeOf(start), 7ms);
    EXPECT_EQ(PlatformClock::RealTimeOf(start + 2500ms) - PlatformClock::RealTimeOf(start + 500ms), 2s);
}

}  // namespace
}  // namespace Tarvo
