#include "event_handler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "task_journal.h"
#include "virtual_clock.h"
#include "work_tracker.h"

namespace Tarvo::AppExecFwk {
namespace {
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using Priority = EventHandler::Priority;

class EventHandlerTest : public testing::Test {
protected:
    // Before the fixture's members exist, so the journal starts on virtual time.
    static void SetUpTestSuite() { VirtualClock::Install(); }

    void SetUp() override
    {
        runner_ = EventRunner::Create("handler_test");
        handler_ = std::make_shared<EventHandler>(runner_);
    }

    InnerEvent::Callback Note(const std::string& name)
    {
        return [this, name] { journal_.Note(name); };
    }

    std::vector<std::string> PendingNames(const EventHandler& handler) const
    {
        std::vector<std::string> names;
        for (const auto& task : handler.GetPendingTasks()) {
            names.push_back(task.name);
        }
        return names;
    }

    std::shared_ptr<EventRunner> runner_;
    std::shared_ptr<EventHandler> handler_;
    TaskJournal journal_;
};

TEST_F(EventHandlerTest, TasksRunByDueTimeThenPriorityThenSendingOrder)
{
    handler_->PostTask(Note("negative"), "", -7);
    handler_->PostTask(Note("late"), "", 10, Priority::VIP);
    handler_->PostTask(Note("low1"), "", 5, Priority::LOW);
    handler_->PostTask(Note("idle"), "", 5, Priority::IDLE);
    handler_->PostTask(Note("high"), "", 5, Priority::HIGH);
    handler_->PostTask(Note("low2"), "", 5, Priority::LOW);
    handler_->SendEvent(InnerEvent::Get(Note("vip")), 5, Priority::VIP);
    handler_->PostTask(Note("immediate"), "", 5, Priority::IMMEDIATE);

    ASSERT_TRUE(VirtualClock::AdvanceBy(4ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("negative@0"));
    ASSERT_TRUE(VirtualClock::AdvanceBy(6ms));
    EXPECT_THAT(journal_.Entries(),
                ElementsAre("negative@0", "vip@5", "immediate@5", "high@5", "low1@5", "low2@5", "idle@5", "late@10"));
}

TEST_F(EventHandlerTest, PendingTasksAreListedInRunOrderWithTheirCallSite)
{
    const int line = __LINE__ + 1;
    handler_->PostTask(Note("second"), "second", 20, Priority::HIGH);
    handler_->PostTask(Note("first"), "first", 10);
    InnerEvent::Pointer event = InnerEvent::Get(Note("third"), "third");
    ASSERT_TRUE(handler_->SendEvent(event, 20, Priority::LOW));
    EXPECT_EQ(event, nullptr);

    const auto pending = handler_->GetPendingTasks();
    ASSERT_EQ(pending.size(), 3u);
    EXPECT_EQ(pending[0].name, "first");
    EXPECT_EQ(journal_.Elapsed(pending[0].due), 10);
    EXPECT_EQ(pending[1].name, "second");
    EXPECT_EQ(pending[1].priority, Priority::HIGH);
    EXPECT_EQ(pending[1].caller.line_, line);
    EXPECT_THAT(pending[1].caller.file_, EndsWith("event_handler_test.cpp"));
    EXPECT_EQ(pending[2].name, "third");
    EXPECT_EQ(journal_.Elapsed(pending[2].due), 20);
}

TEST_F(EventHandlerTest, RemoveTaskDropsQueuedTasksOfThisHandlerWithThatExactName)
{
    auto other = std::make_shared<EventHandler>(runner_);
    handler_->PostTask(Note("a"), "a", 10);
    handler_->PostTask(Note("b"), "b", 10);
    handler_->PostTask(Note("unnamed"), "", 10);
    handler_->PostTask(Note("a-later"), "a", 20);
    handler_->PostTask(Note("ab"), "ab", 20);
    other->PostTask(Note("other-a"), "a", 10);

    handler_->RemoveTask("a");
    EXPECT_THAT(PendingNames(*handler_), ElementsAre("b", "", "ab"));
    handler_->RemoveTask("");
    EXPECT_THAT(PendingNames(*handler_), ElementsAre("b", "ab"));
    EXPECT_THAT(PendingNames(*other), ElementsAre("a"));

    ASSERT_TRUE(VirtualClock::AdvanceBy(20ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("b@10", "other-a@10", "ab@20"));
}

TEST_F(EventHandlerTest, RemoveTaskLeavesTheRunningTaskAlone)
{
    std::promise<void> started;
    std::promise<void> release;
    auto released = release.get_future().share();
    handler_->PostTask(
        [&, released] {
            started.set_value();
            released.wait();
            journal_.Note("running");
        },
        "x");
    handler_->PostTask(Note("queued"), "x");
    handler_->PostTask(Note("delayed"), "x", 10);
    started.get_future().wait();

    handler_->RemoveTask("x");
    EXPECT_EQ(WorkTracker::GetInstance().InFlight(), 1);
    release.set_value();
    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("running@0"));
}

TEST_F(EventHandlerTest, RemoveAllEventsAndDestructionDropOnlyThatHandlersTasks)
{
    auto other = std::make_shared<EventHandler>(runner_);
    auto shortLived = std::make_shared<EventHandler>(runner_);
    handler_->PostTask(Note("removed"), "removed", 10);
    other->PostTask(Note("kept"), "kept", 10);
    shortLived->PostTask(Note("orphaned"), "orphaned", 10);

    handler_->RemoveAllEvents();
    shortLived.reset();
    EXPECT_THAT(PendingNames(*handler_), IsEmpty());
    ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("kept@10"));
}

// Past a size the queue gives its nodes back once it is empty; it must go on as before.
TEST_F(EventHandlerTest, AQueueThatHeldThousandsOfTasksWorksOnOnceItHasEmptied)
{
    constexpr int kTasks = 3000;
    int ran = 0;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < kTasks; ++i) {
            handler_->PostTask([&] { ++ran; }, i % 2 == 0 ? "even" : "odd " + std::to_string(i), 10);
        }
        handler_->RemoveTask("even");
        ASSERT_TRUE(VirtualClock::AdvanceBy(10ms));
        EXPECT_EQ(ran, (round + 1) * kTasks / 2);
    }
    handler_->PostTask(Note("later"), "later", 5);
    handler_->PostTask(Note("sooner"), "sooner", 1);
    handler_->RemoveTask("later");
    ASSERT_TRUE(VirtualClock::AdvanceBy(5ms));
    EXPECT_THAT(journal_.Entries(), ElementsAre("sooner@21"));
}

TEST_F(EventHandlerTest, SendEventRefusesWhatItCannotRun)
{
    InnerEvent::Pointer null(nullptr, nullptr);
    EXPECT_FALSE(handler_->SendEvent(null));
    InnerEvent::Pointer empty = InnerEvent::Get(nullptr, "empty");
    EXPECT_FALSE(handler_->SendEvent(empty));
    EXPECT_EQ(empty, nullptr);

    EventHandler detached;
    EXPECT_FALSE(detached.PostTask(Note("detached")));
    EXPECT_EQ(detached.GetEventRunner(), nullptr);
    EXPECT_THAT(detached.GetPendingTasks(), IsEmpty());

    runner_->Stop();
    EXPECT_FALSE(handler_->PostTask(Note("stopped")));
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_THAT(journal_.Entries(), IsEmpty());
}

}  // namespace
}  // namespace Tarvo::AppExecFwk
