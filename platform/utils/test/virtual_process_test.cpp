#include "virtual_process.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sequencer.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
using namespace std::chrono_literals;

std::shared_ptr<VirtualProcess> MakeProcess(int32_t pid, const std::string& name)
{
    return VirtualProcess::Create({pid, pid + 1000, 7u, 7u, name});
}

TEST(VirtualProcessTest, ThreadsWorkForTheirProcess)
{
    auto app = MakeProcess(100, "app");
    EXPECT_EQ(VirtualProcess::Current(), VirtualProcess::Host());
    std::promise<int32_t> seen;
    ASSERT_TRUE(app->Post([&] { seen.set_value(VirtualProcess::Current()->Pid()); }));
    EXPECT_EQ(seen.get_future().get(), 100);

    int32_t fromThread = 0;
    app->StartThread([&] { fromThread = VirtualProcess::Current()->Pid(); }).join();
    EXPECT_EQ(fromThread, 100);
    {
        ScopedProcess scope(app);
        EXPECT_EQ(VirtualProcess::Current()->Name(), "app");
    }
    EXPECT_EQ(VirtualProcess::Current(), VirtualProcess::Host());
}

TEST(VirtualProcessTest, QueuedWorkCountsUntilItReturns)
{
    auto app = MakeProcess(101, "app");
    std::promise<void> release;
    auto released = release.get_future().share();
    ASSERT_TRUE(app->Post([released] { released.wait(); }));
    EXPECT_FALSE(WorkTracker::GetInstance().WaitQuiet(20ms));
    release.set_value();
    EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    EXPECT_EQ(WorkTracker::GetInstance().InFlight(), 0);
}

TEST(VirtualProcessTest, NestedWorkGetsMoreThreads)
{
    auto app = MakeProcess(102, "app");
    std::promise<void> inner;
    ASSERT_TRUE(app->Post([&] {
        // A handler waiting on more work of its own process must not starve it.
        std::promise<void> nested;
        app->Post([&] { nested.set_value(); });
        nested.get_future().wait();
        inner.set_value();
    }));
    EXPECT_EQ(inner.get_future().wait_for(5s), std::future_status::ready);
}

TEST(VirtualProcessTest, HandOffRunsFirstEvenWhenEveryThreadHoldsALaterTurn)
{
    Sequencer::Enable();
    auto app = MakeProcess(105, "app");
    std::mutex mutex;
    std::vector<size_t> ran;
    auto note = [&](size_t id) {
        std::lock_guard<std::mutex> lock(mutex);
        ran.push_back(id);
    };
    {
        Sequencer::Hold hold;
        for (size_t i = 1; i <= VirtualProcess::kMaxThreads + 2; ++i) {
            ASSERT_TRUE(app->Post([&note, i] { note(i); }));
        }
        ASSERT_TRUE(app->PostNext([&note] { note(0); }));
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    ASSERT_EQ(ran.size(), VirtualProcess::kMaxThreads + 3);
    for (size_t i = 0; i < ran.size(); ++i) {
        EXPECT_EQ(ran[i], i);
    }
}

TEST(VirtualProcessTest, CarriedTurnsRunInLineOrderWhateverOrderTheyArriveIn)
{
    Sequencer::Enable();
    auto app = MakeProcess(106, "app");
    std::mutex mutex;
    std::vector<std::string> ran;
    auto note = [&](std::string name) {
        return [&mutex, &ran, name] {
            std::lock_guard<std::mutex> lock(mutex);
            ran.push_back(name);
        };
    };
    {
        Sequencer::Hold hold;
        const Sequencer::Turn back = Sequencer::Reserve();
        const Sequencer::Turn gone = Sequencer::Reserve();
        const Sequencer::Turn last = Sequencer::Reserve();
        const Sequencer::Turn handOff = Sequencer::ReserveFirst();
        Sequencer::Cancel(gone);
        ASSERT_TRUE(app->PostTurn(last, note("last")));
        ASSERT_TRUE(app->PostTurn(gone, note("cancelled, so behind everything")));
        ASSERT_TRUE(app->PostTurn(back, note("back")));
        ASSERT_TRUE(app->PostTurn(handOff, note("hand-off")));
        ASSERT_TRUE(app->Post(note("posted")));
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    EXPECT_EQ(ran, (std::vector<std::string>{"hand-off", "back", "last", "cancelled, so behind everything", "posted"}));
}

TEST(VirtualProcessTest, BackToBackPostsDoNotQueueBehindABusyThread)
{
    auto app = MakeProcess(104, "app");
    std::promise<void> second;
    auto secondRan = second.get_future().share();
    std::promise<void> first;
    // Posted together, before any thread has picked up the first: the first waits on the second.
    ASSERT_TRUE(app->Post([&] {
        secondRan.wait();
        first.set_value();
    }));
    ASSERT_TRUE(app->Post([&] { second.set_value(); }));
    EXPECT_EQ(first.get_future().wait_for(5s), std::future_status::ready);
}

// Notes what ran, in order, and on which thread.
class Journal {
public:
    std::function<void()> Note(std::string name)
    {
        return [this, name] {
            std::lock_guard<std::mutex> lock(mutex_);
            names_.push_back(name);
            threads_.push_back(std::this_thread::get_id());
        };
    }
    std::vector<std::string> Names()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return names_;
    }
    size_t Threads()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return std::set<std::thread::id>(threads_.begin(), threads_.end()).size();
    }

private:
    std::mutex mutex_;
    std::vector<std::string> names_;
    std::vector<std::thread::id> threads_;
};

TEST(VirtualProcessTest, LaneTakesABurstInOneDrainInPostingOrder)
{
    auto app = MakeProcess(107, "app");
    Journal journal;
    int a = 0;
    int b = 0;
    int c = 0;
    std::promise<void> posted;
    auto allPosted = posted.get_future().share();
    ASSERT_TRUE(app->PostInLane(&a, [&, note = journal.Note("a1")] {
        allPosted.wait();
        note();
    }));
    for (auto [key, name] : {std::pair{&b, "b1"}, {&a, "a2"}, {&c, "c1"}, {&b, "b2"}}) {
        ASSERT_TRUE(app->PostInLane(key, journal.Note(name)));
    }
    posted.set_value();
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    EXPECT_EQ(journal.Names(), (std::vector<std::string>{"a1", "b1", "a2", "c1", "b2"}));
    EXPECT_EQ(journal.Threads(), 1u);
}

TEST(VirtualProcessTest, LaneWakesHeldByAThreadAreGivenWhenItsOutermostHoldEnds)
{
    auto app = MakeProcess(120, "app");
    int key = 0;
    // A thread of the process is up and idle, so only a wake-up can make it drain.
    ASSERT_TRUE(app->PostInLane(&key, [] {}));
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    auto ran = std::make_shared<std::promise<void>>();
    {
        VirtualProcess::HoldLaneWakes outer;
        {
            VirtualProcess::HoldLaneWakes inner;
            ASSERT_TRUE(app->PostInLane(&key, [ran] { ran->set_value(); }));
        }
    }
    EXPECT_EQ(ran->get_future().wait_for(5s), std::future_status::ready);
}

TEST(VirtualProcessTest, LaneWorkThatBlocksLetsOtherKeysGoOnButNotItsOwn)
{
    auto app = MakeProcess(108, "app");
    Journal journal;
    int a = 0;
    int b = 0;
    std::promise<void> bRan;
    auto bDone = bRan.get_future().share();
    ASSERT_TRUE(app->PostInLane(&a, [&, note = journal.Note("a1")] {
        VirtualProcess::LetLaneGoOn();
        // b's work can only run on another thread while this one waits.
        EXPECT_EQ(bDone.wait_for(5s), std::future_status::ready);
        note();
    }));
    ASSERT_TRUE(app->PostInLane(&a, journal.Note("a2")));
    ASSERT_TRUE(app->PostInLane(&b, [&, note = journal.Note("b1")] {
        note();
        bRan.set_value();
    }));
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    EXPECT_EQ(journal.Names(), (std::vector<std::string>{"b1", "a1", "a2"}));
    // Outside lane work it does nothing.
    VirtualProcess::LetLaneGoOn();
}

TEST(VirtualProcessTest, LaneWorkTakesTheTurnsReservedWhenPosted)
{
    Sequencer::Enable();
    auto app = MakeProcess(109, "app");
    auto other = MakeProcess(110, "other");
    Journal journal;
    int a = 0;
    int b = 0;
    {
        Sequencer::Hold hold;
        ASSERT_TRUE(app->PostInLane(&a, journal.Note("app a")));
        ASSERT_TRUE(other->Post(journal.Note("other")));
        ASSERT_TRUE(app->PostInLane(&b, journal.Note("app b")));
        ASSERT_TRUE(app->Post(journal.Note("app posted")));
        ASSERT_TRUE(app->PostInLane(&a, journal.Note("app a again")));
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(5s));
    EXPECT_EQ(journal.Names(), (std::vector<std::string>{"app a", "other", "app b", "app posted", "app a again"}));
}

TEST(VirtualProcessTest, KillIsTerminalAndTellsObserversOnce)
{
    static std::atomic<int> kills{0};
    static std::atomic<int32_t> lastPid{0};
    VirtualProcess::AddKillObserver([](VirtualProcess& killed) {
        ++kills;
        lastPid = killed.Pid();
    });
    auto app = MakeProcess(103, "app");
    app->Kill();
    app->Kill();
    EXPECT_FALSE(app->IsAlive());
    EXPECT_EQ(kills, 1);
    EXPECT_EQ(lastPid, 103);
    EXPECT_FALSE(app->Post([] {}));
    EXPECT_FALSE(app->PostInLane(&lastPid, [] {}));
}

}  // namespace
}  // namespace Tarvo
