// The service's task queue in virtual time.
#include "zel_event_handle.h"

#include <gtest/gtest.h>

#include "hilog.h"
#include "virtual_clock.h"

namespace Tarvo::Vantel {
namespace {
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using HiviewDFX::LOG_WARN;

class ZelEventHandleTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();  // before any runner exists
        start_ = PlatformClock::now();
        handle_ = std::make_unique<EventHandle>(EventRunner::Create("zel_manager_service_handler"));
    }

    // Runs what falls due up to `ms` after the test began.
    void RunUntil(int64_t ms) { ASSERT_TRUE(VirtualClock::AdvanceTo(start_ + PlatformClock::duration(ms))); }

    // A task that records, in `ran_`, its label and the virtual time it ran at. Read once the
    // clock has settled.
    EventHandle::Task Record(const std::string& label)
    {
        return [this, label] { ran_.push_back(label + "@" + std::to_string((PlatformClock::now() - start_).count())); };
    }
    std::vector<std::string> PendingNames()
    {
        std::vector<std::string> names;
        for (const auto& task : handle_->GetHandler()->GetPendingTasks()) {
            names.push_back(task.name);
        }
        return names;
    }

    PlatformClock::time_point start_;
    std::unique_ptr<EventHandle> handle_;
    std::vector<std::string> ran_;
};

// Looked at from a task of its own, so that the runner is busy and the others stay queued.
TEST_F(ZelEventHandleTest, TheSingletonRunsOnItsNamedRunnerAtLowPriorityWithItsCallerRecords)
{
    EventHandle* handle = EventHandle::GetInstance();
    EXPECT_EQ(handle->GetHandler()->GetEventRunner()->GetRunnerThreadName(), "zel_manager_service_handler");
    std::vector<std::string> pending;
    handle->ExecuteAsyncTask([handle, &pending] {
        handle->DelayTask([] {}, 10);
        handle->PostEvent([] {}, "named", 20);
        handle->ExecuteAsyncTask([] {});
        for (const auto& task : handle->GetHandler()->GetPendingTasks()) {
            pending.push_back(std::string(task.caller.file_) + " " + task.caller.func_ + ":" + task.name +
                              (task.priority == EventHandler::Priority::LOW ? " low" : " not low"));
        }
    });
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    const std::string file = "zel_manager/zel_server/src/zel_event_handle ";
    EXPECT_EQ(pending, (std::vector<std::string>{file + "ExecuteAsyncTask: low", file + "DelayTask: low",
                                                 file + "PostEvent:named low"}));
}

// A later post of a name cancels nothing; withdrawing a name takes all its queued tasks, but
// only while none of them has begun since it was last posted. Unnamed tasks stay.
TEST_F(ZelEventHandleTest, NamedTasksAreWithdrawnOnlyUntilTheirNameBegins)
{
    handle_->RemoveEvent("never-posted");
    handle_->PostEvent(Record("first"), "N", 100);
    handle_->PostEvent(Record("second"), "N", 200);
    handle_->DelayTask(Record("delayed"), 300);
    handle_->ExecuteAsyncTask(Record("async"));
    handle_->RemoveEvent("");
    RunUntil(150);
    handle_->RemoveEvent("N");
    EXPECT_EQ(PendingNames(), (std::vector<std::string>{"N", ""}));
    RunUntil(250);
    handle_->PostEvent(Record("third"), "N", 100);
    handle_->PostEvent(Record("fourth"), "N", 400);
    handle_->RemoveEvent("N");
    EXPECT_EQ(PendingNames(), std::vector<std::string>{""});
    RunUntil(1000);
    EXPECT_EQ(ran_, (std::vector<std::string>{"async@0", "first@100", "second@200", "delayed@300"}));
}

TEST_F(ZelEventHandleTest, ATaskMayPostAndWithdrawFromTheRunnerThread)
{
    handle_->PostEvent(
        [this] {
            handle_->PostEvent(Record("doomed"), "inner", 10);
            handle_->RemoveEvent("inner");
            handle_->DelayTask(Record("kept"), 10);
        },
        "outer", 100);
    RunUntil(200);
    EXPECT_EQ(ran_, std::vector<std::string>{"kept@110"});
}

TEST_F(ZelEventHandleTest, WithoutAHandlerEveryOperationOnlyWarns)
{
    HiviewDFX::LogCapture log;
    EventHandle none(nullptr);
    none.PostEvent(Record("x"), "N", 0);
    none.RemoveEvent("N");
    none.DelayTask(Record("x"), 0);
    none.ExecuteAsyncTask(Record("x"));
    none.SetAnimationDelayDelete(Record("x"));
    RunUntil(5000);
    EXPECT_TRUE(ran_.empty());
    EXPECT_EQ(log.Messages(LOG_WARN), (std::vector<std::string>{
                                          "EventHandle PostEvent error, mHandler is null",
                                          "EventHandle RemoveEvent error, mHandler is null",
                                          "EventHandle DelayTast error, mHandler is null",
                                          "EventHandle ExecuteAsyncTask error, mHandler is null",
                                          "EventHandle SetAnimationDelayDelete error, mHandler is null",
                                      }));
}

}  // namespace
}  // namespace Tarvo::Vantel
