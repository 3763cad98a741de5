#include "virtual_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "event_handler.h"
#include "event_runner.h"
#include "task_journal.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
using namespace std::chrono_literals;
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using testing::ElementsAre;
using testing::IsEmpty;

class VirtualClockTest : public testing::Test {
protected:
    // Before the fixture's members exist, so the journal starts on virtual time.
    static void SetUpTestSuite() { VirtualClock::Install(); }

    void SetUp() override
    {
        runner_ = EventRunner::Create("clock_test");
        handler_ = std::make_shared<EventHandler>(runner_);
    }

    static int64_t InFlight() { return WorkTracker::GetInstance().InFlight(); }

    std::shared_ptr<EventRunner> runner_;
    std::shared_ptr<EventHandler> handler_;
    TaskJournal journal_;
};

TEST_F(VirtualClockTest, AdvanceRunsTasksPostedMeanwhileInDueOrder)
{
    handler_->PostTask(
        [this] {
            journal_.Note("A");
            handler_->PostTask([this] { journal_.Note("B"); });
            handler_->PostTask([this] { journal_.Note("C"); }, "", 3);
        },
        "", 10);
    handler_->PostTask([this] { journal_.Note("D"); }, "", 12);
    handler_->PostTask([this] { journal_.Note("E"); }, "", 20);

    ASSERT_TRUE(VirtualClock::AdvanceBy(15ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("A@10", "B@10", "D@12", "C@13"));
    EXPECT_EQ(journal_.Elapsed(), 15);
    ASSERT_TRUE(VirtualClock::NextDue().has_value());
    EXPECT_EQ(journal_.Elapsed(*VirtualClock::NextDue()), 20);

    ASSERT_TRUE(VirtualClock::AdvanceTo(journal_.Start() + 20ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("A@10", "B@10", "D@12", "C@13", "E@20"));
    EXPECT_FALSE(VirtualClock::NextDue().has_value());
}

TEST_F(VirtualClockTest, RunnersDueAtOneInstantTakeTurnsInTheOrderTheyBecameReady)
{
    auto other = std::make_shared<EventHandler>(EventRunner::Create("clock_other"));
    handler_->PostTask([this] { journal_.Note("A1"); }, "", 10);
    handler_->PostTask(
        [this, other] {
            journal_.Note("A2");
            other->PostTask([this] { journal_.Note("B2"); });
        },
        "", 10);
    other->PostTask([this] { journal_.Note("B1"); }, "", 10);
    handler_->PostTask([this] { journal_.Note("A3"); }, "", 10);

    // Each runner runs one task a turn and queues again behind whoever was ready before it.
    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("A1@10", "B1@10", "A2@10", "B2@10", "A3@10"));
}

TEST_F(VirtualClockTest, ZeroDelayRunsWithoutMovingTimeAndTimeNeverGoesBack)
{
    ASSERT_TRUE(VirtualClock::AdvanceBy(100ms));
    handler_->PostTask([this] { journal_.Note("waited"); });
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    handler_->PostTask([this] { journal_.Note("advanced"); }, "", -5);
    ASSERT_TRUE(VirtualClock::AdvanceBy(0ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("waited@100", "advanced@100"));

    handler_->PostTask([this] { journal_.Note("later"); }, "", 1);
    EXPECT_TRUE(VirtualClock::AdvanceTo(journal_.Start() + 50ms));
    EXPECT_TRUE(VirtualClock::AdvanceBy(-10ms));
    EXPECT_EQ(journal_.Elapsed(), 100);
    EXPECT_THAT(journal_.Entries(), ElementsAre("waited@100", "advanced@100"));
}

TEST_F(VirtualClockTest, OnlyDueTasksCountAsWorkInFlight)
{
    handler_->PostTask([] {}, "", 50);
    EXPECT_EQ(InFlight(), 0);
    EXPECT_TRUE(VirtualClock::WaitQuiet(1ms));

    std::promise<void> release;
    auto released = release.get_future().share();
    handler_->PostTask([released] { released.wait(); });
    handler_->PostTask([] {});
    EXPECT_EQ(InFlight(), 2);
    release.set_value();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(InFlight(), 0);
}

TEST_F(VirtualClockTest, BlockedTaskIsReportedAsAHang)
{
    std::promise<void> release;
    auto released = release.get_future().share();
    handler_->PostTask([this, released] {
        released.wait();
        journal_.Note("released");
    });
    handler_->PostTask([this] { journal_.Note("queued"); }, "", 10);

    EXPECT_FALSE(VirtualClock::WaitQuiet(20ms));
    EXPECT_FALSE(VirtualClock::AdvanceBy(10ms, 20ms));
    EXPECT_THAT(journal_.Entries(), IsEmpty());

    release.set_value();
    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("released@0", "queued@10"));
    EXPECT_EQ(InFlight(), 0);
}

}  // namespace
}  // namespace Tarvo
