#include "event_runner.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <future>

#include "event_handler.h"
#include "virtual_clock.h"
#include "virtual_process.h"
#include "work_tracker.h"

namespace Tarvo::AppExecFwk {
namespace {
using namespace std::chrono_literals;

class EventRunnerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { VirtualClock::Install(); }

    static int64_t InFlight() { return WorkTracker::GetInstance().InFlight(); }
};

TEST_F(EventRunnerTest, ThreadIsNamedAndWorksForTheCreatingProcess)
{
    auto app = VirtualProcess::Create({321, 20321, 5u, 5u, "app"});
    std::shared_ptr<EventRunner> runner;
    {
        ScopedProcess scope(app);
        runner = EventRunner::Create("zel_manager_event_runner");
    }
    EXPECT_EQ(runner->GetRunnerThreadName(), "zel_manager_event_runner");
    EXPECT_TRUE(runner->IsRunning());

    std::string threadName;
    int32_t pid = 0;
    auto handler = std::make_shared<EventHandler>(runner);
    handler->PostTask([&] {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        threadName = name;
        pid = VirtualProcess::Current()->Pid();
    });
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(threadName, "zel_manager_eve");
    EXPECT_EQ(pid, 321);
}

TEST_F(EventRunnerTest, StopDropsPendingTasksAndRefusesNewOnes)
{
    auto runner = EventRunner::Create("stopping");
    auto handler = std::make_shared<EventHandler>(runner);
    bool ran = false;
    handler->PostTask([&] { ran = true; }, "due", 10);
    handler->PostTask([&] { ran = true; }, "far", 1000);
    ASSERT_TRUE(VirtualClock::AdvanceBy(5ms));

    runner->Stop();
    runner->Stop();
    EXPECT_FALSE(runner->IsRunning());
    EXPECT_TRUE(handler->GetPendingTasks().empty());
    EXPECT_FALSE(VirtualClock::NextDue().has_value());
    EXPECT_FALSE(handler->PostTask([&] { ran = true; }));
    ASSERT_TRUE(VirtualClock::AdvanceBy(2000ms));
    EXPECT_FALSE(ran);
    EXPECT_EQ(InFlight(), 0);
}

TEST_F(EventRunnerTest, StopFromItsOwnTaskReleasesTheDueTasksItDrops)
{
    auto runner = EventRunner::Create("self_stop");
    auto handler = std::make_shared<EventHandler>(runner);
    std::promise<void> release;
    auto released = release.get_future().share();
    bool ran = false;
    handler->PostTask([&, released] {
        released.wait();
        runner->Stop();
    });
    handler->PostTask([&] { ran = true; });
    handler->PostTask([&] { ran = true; }, "", 1, EventHandler::Priority::VIP);
    EXPECT_EQ(InFlight(), 2);

    release.set_value();
    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_FALSE(ran);
    EXPECT_FALSE(runner->IsRunning());
    EXPECT_EQ(InFlight(), 0);
}

TEST_F(EventRunnerTest, LastReferenceDroppedByItsOwnTaskEndsTheRunner)
{
    auto runner = EventRunner::Create("orphan");
    std::weak_ptr<EventRunner> watch = runner;
    auto handler = std::make_shared<EventHandler>(runner);
    handler->PostTask([keep = handler] {}, "", 10);
    handler.reset();
    runner.reset();
    ASSERT_FALSE(watch.expired());

    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(InFlight(), 0);
}

}  // namespace
}  // namespace Tarvo::AppExecFwk
