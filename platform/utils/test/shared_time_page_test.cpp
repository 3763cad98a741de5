#include "shared_time_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <future>
#include <thread>

#include "forked_child.h"
#include "sequencer.h"
#include "time_page_layout.h"
#include "virtual_process.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
using namespace std::chrono_literals;
using Forked::Channel;
using Forked::ForkedChild;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kKilled = 128 + SIGKILL;

class SharedTimePageTest : public Forked::SharedPageTest {
protected:
    // In a child: uses the page and runs sequenced.
    void Attach() const
    {
        std::string reason;
        CHILD_REQUIRE(SharedTimePage::Attach(page_, reason));
        Sequencer::Enable();
    }
    // In a child: a thread that notes `name` in the journal once it holds `turn`.
    std::thread TakeLater(Sequencer::Turn turn, std::string name) const
    {
        return std::thread([this, turn, name = std::move(name)] {
            Forked::Note(journal_, Sequencer::Take(turn) ? name : name + " cancelled");
            Sequencer::Finish();
        });
    }
    static int JoinAll(std::vector<std::thread>& threads)
    {
        for (auto& thread : threads) {
            thread.join();
        }
        return 0;
    }
};

TEST_F(SharedTimePageTest, TurnsOfTwoProcessesAreTakenInLineOrderAcrossBoth)
{
    ForkedChild first([this](Channel& test) {
        Attach();
        std::vector<std::thread> threads;
        {
            Sequencer::Hold hold;
            threads.push_back(TakeLater(Sequencer::Reserve(), "first 1"));
            test.Send(1);
            test.Expect();
            threads.push_back(TakeLater(Sequencer::Reserve(), "first 2"));
        }
        return JoinAll(threads);
    });
    ForkedChild second([this](Channel& test) {
        Attach();
        test.Expect();
        std::vector<std::thread> threads;
        const Sequencer::Turn a = Sequencer::Reserve();
        const Sequencer::Turn b = Sequencer::Reserve();
        // Waiting in the reverse order changes nothing.
        threads.push_back(TakeLater(b, "second 2"));
        threads.push_back(TakeLater(a, "second 1"));
        test.Send(1);
        return JoinAll(threads);
    });
    first.Talk().Receive();
    second.Talk().Send(1);
    second.Talk().Receive();
    first.Talk().Send(1);
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_THAT(Forked::Lines(journal_), ElementsAre("first 1", "second 1", "second 2", "first 2"));
}

TEST_F(SharedTimePageTest, HandOffAndCarriedTurnsKeepTheirPlaceAcrossProcesses)
{
    ForkedChild receiver([this](Channel& test) {
        Attach();
        auto process = VirtualProcess::Create({4242, 0, 0, 0, "receiver"});
        std::promise<void> carried;
        std::vector<std::thread> threads;
        {
            Sequencer::Hold hold;
            threads.push_back(TakeLater(Sequencer::Reserve(), "receiver 1"));
            threads.push_back(TakeLater(Sequencer::Reserve(), "receiver 2"));
            test.Send(1);
            const Sequencer::Turn turn = test.Expect();
            CHILD_REQUIRE(process->PostTurn(turn, [&] {
                Forked::Note(journal_, "carried work");
                carried.set_value();
            }));
        }
        carried.get_future().wait();
        return JoinAll(threads);
    });
    ForkedChild sender([this](Channel& test) {
        Attach();
        test.Expect();
        std::thread handOff = TakeLater(Sequencer::ReserveFirst(), "sender hand-off");
        // Reserved here, taken there, as a message carrying its turn.
        test.Send(Sequencer::Reserve());
        handOff.join();
        return 0;
    });
    receiver.Talk().Receive();
    sender.Talk().Send(1);
    receiver.Talk().Send(*sender.Talk().Receive());
    EXPECT_EQ(sender.Wait(), 0);
    EXPECT_EQ(receiver.Wait(), 0);
    EXPECT_THAT(Forked::Lines(journal_), ElementsAre("sender hand-off", "receiver 1", "receiver 2", "carried work"));
}

TEST_F(SharedTimePageTest, WorkBegunInOneProcessMayEndInAnotherAndTheWaiterHearsOfIt)
{
    ForkedChild waiter([this](Channel& test) {
        Attach();
        WorkTracker::GetInstance().Begin();
        test.Send(1);
        CHILD_REQUIRE(WorkTracker::GetInstance().WaitQuiet(10s));
        Forked::Note(journal_, "quiet");
        return 0;
    });
    ForkedChild ender([this](Channel& test) {
        Attach();
        test.Expect();
        Forked::Note(journal_, "in flight " + std::to_string(WorkTracker::GetInstance().InFlight()));
        WorkTracker::GetInstance().End();
        return 0;
    });
    waiter.Talk().Receive();
    ender.Talk().Send(1);
    EXPECT_EQ(ender.Wait(), 0);
    EXPECT_EQ(waiter.Wait(), 0);
    EXPECT_THAT(Forked::Lines(journal_), ElementsAre("in flight 1", "quiet"));
}

// A one-way request on its way is counted in its receiver's share: handled, it is done there; the
// receiver dead, it goes with the receiver's share.
TEST_F(SharedTimePageTest, WorkCountedForItsReceiverEndsThereOrGoesWithIt)
{
    ForkedChild receiver([this](Channel& test) {
        Attach();
        test.Send(1);
        test.Expect();
        {
            WorkTracker::Token handled = WorkTracker::Token::Adopt();
        }
        test.Send(1);
        test.Receive();
        return 0;
    });
    ForkedChild sender([this](Channel& test) {
        Attach();
        WorkTracker& tracker = WorkTracker::GetInstance();
        const auto to = static_cast<int32_t>(test.Expect());
        tracker.BeginFor(to);
        tracker.BeginFor(to);
        Forked::Note(journal_, "sent " + std::to_string(tracker.InFlight()));
        test.Send(1);
        test.Expect();
        Forked::Note(journal_, "one handled " + std::to_string(tracker.InFlight()));
        tracker.Forget(to);
        CHILD_REQUIRE(tracker.WaitQuiet(10s));
        Forked::Note(journal_, "receiver forgotten");
        return 0;
    });
    receiver.Talk().Receive();
    sender.Talk().Send(static_cast<uint64_t>(receiver.Pid()));
    sender.Talk().Receive();
    receiver.Talk().Send(1);
    receiver.Talk().Receive();
    receiver.Kill();
    EXPECT_EQ(receiver.Wait(), kKilled);
    sender.Talk().Send(1);
    EXPECT_EQ(sender.Wait(), 0);
    EXPECT_THAT(Forked::Lines(journal_), ElementsAre("sent 2", "one handled 1", "receiver forgotten"));
}

struct Death {
    const char* name;
    bool holdsBaton;
    bool holdsLock;
    friend void PrintTo(const Death& death, std::ostream* out) { *out << death.name; }
};

class KilledProcessTest : public SharedTimePageTest, public testing::WithParamInterface<Death> {};

// The victim dies with turns in line, work in flight and, as the case may be, the baton or the page's lock.
TEST_P(KilledProcessTest, TheOthersGoOnOnceItIsForgotten)
{
    const Death death = GetParam();
    ForkedChild victim([this, death](Channel& test) {
        Attach();
        if (death.holdsBaton) {
            Sequencer::Take(Sequencer::Reserve());
        }
        Sequencer::Reserve();
        Sequencer::Reserve();
        WorkTracker::GetInstance().Begin();
        WorkTracker::GetInstance().Begin();
        test.Send(1);
        test.Expect();
        if (death.holdsLock) {
            pthread_mutex_lock(&TimePage::Current().mutex);
        }
        test.Send(1);
        test.Receive();
        return 0;
    });
    ForkedChild survivor([this](Channel& test) {
        Attach();
        test.Expect();
        WorkTracker& tracker = WorkTracker::GetInstance();
        tracker.Begin();
        std::thread waiting = TakeLater(Sequencer::Reserve(), "survivor");
        test.Send(1);
        const auto dead = static_cast<int32_t>(test.Expect());
        Forked::Note(journal_, "in flight " + std::to_string(tracker.InFlight()));
        Sequencer::Forget(dead);
        tracker.Forget(dead);
        waiting.join();
        Forked::Note(journal_, "in flight " + std::to_string(tracker.InFlight()));
        tracker.End();
        CHILD_REQUIRE(tracker.WaitQuiet(10s));
        return 0;
    });
    victim.Talk().Receive();
    survivor.Talk().Send(1);
    survivor.Talk().Receive();
    // The survivor waits behind the victim's turns; now the victim takes the lock, as the case may be.
    victim.Talk().Send(1);
    victim.Talk().Receive();
    victim.Kill();
    EXPECT_EQ(victim.Wait(), kKilled);
    survivor.Talk().Send(static_cast<uint64_t>(victim.Pid()));
    EXPECT_EQ(survivor.Wait(), 0);
    EXPECT_THAT(Forked::Lines(journal_), ElementsAre("in flight 3", "survivor", "in flight 1"));
}

INSTANTIATE_TEST_SUITE_P(Deaths, KilledProcessTest,
                         testing::Values(Death{"TurnsInLine", false, false}, Death{"HoldingTheBaton", true, false},
                                         Death{"InsideTheLock", true, true}),
                         [](const auto& info) { return std::string(info.param.name); });

struct BadPage {
    const char* name;
    std::function<void(const std::string& path)> make;
    std::string reason;
};

void WriteAt(const std::string& path, off_t offset, uint32_t value)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(pwrite(fd, &value, sizeof(value), offset), static_cast<ssize_t>(sizeof(value)));
    close(fd);
}

TEST(SharedTimePageFileTest, WhatIsNotACompletePageOfThisBuildIsRefused)
{
    const auto size = static_cast<off_t>(SharedTimePage::Size());
    auto made = [](const std::string& path) {
        std::string reason;
        ASSERT_TRUE(SharedTimePage::Make(path, reason)) << reason;
    };
    const BadPage cases[] = {
        {"missing", [](const std::string&) {}, "cannot open"},
        {"folder", [](const std::string& path) { mkdir(path.c_str(), 0700); }, "cannot open: Is a directory"},
        {"fifo", [](const std::string& path) { mkfifo(path.c_str(), 0600); }, "is not a regular file"},
        {"empty", [](const std::string& path) { std::ofstream{path}; }, "holds 0 bytes"},
        {"truncated",
         [&](const std::string& path) {
             made(path);
             EXPECT_EQ(truncate(path.c_str(), size / 2), 0);
         },
         "holds " + std::to_string(size / 2) + " bytes"},
        {"foreign",
         [&](const std::string& path) {
             made(path);
             WriteAt(path, 0, 0x464c457f);
         },
         "is not a time page"},
        {"other version",
         [&](const std::string& path) {
             made(path);
             WriteAt(path, 8, 7);
         },
         "of version 7, not 3"},
        {"other size",
         [&](const std::string& path) {
             made(path);
             WriteAt(path, 16, 64);
         },
         "declares 64 bytes"},
    };
    Forked::TempFolder folder;
    for (const auto& bad : cases) {
        const std::string path = folder.File(bad.name);
        bad.make(path);
        std::string reason;
        EXPECT_FALSE(SharedTimePage::Attach(path, reason)) << bad.name;
        EXPECT_THAT(reason, HasSubstr(bad.reason)) << bad.name;
    }
    EXPECT_FALSE(SharedTimePage::Attached());
    std::string reason;
    EXPECT_FALSE(SharedTimePage::Make(folder.File("foreign"), reason));
    EXPECT_THAT(reason, HasSubstr("cannot create"));
}

TEST(SharedTimePageDeathTest, AFullLineStopsTheProcessWithAMessage)
{
    EXPECT_DEATH(
        {
            Sequencer::Enable();
            for (uint64_t i = 0; i <= SharedTimePage::kLineCapacity; ++i) {
                Sequencer::Reserve();
            }
        },
        "virtual time: the line of turns is full \\(65536 turns at once\\)");
}

}  // namespace
}  // namespace Tarvo
