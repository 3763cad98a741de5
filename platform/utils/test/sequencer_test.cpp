#include "sequencer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Tarvo {
namespace {
using testing::ElementsAre;

class SequencerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { Sequencer::Enable(); }

    // A thread that waits for `turn`, notes `name` while it holds the baton and gives it up.
    void TakeLater(Sequencer::Turn turn, std::string name)
    {
        threads_.emplace_back([this, turn, name = std::move(name)] {
            const bool taken = Sequencer::Take(turn);
            Note(taken ? name : name + " cancelled");
            Sequencer::Finish();
        });
    }
    void Note(const std::string& entry)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        notes_.push_back(entry);
    }
    std::vector<std::string> JoinAll()
    {
        for (auto& thread : threads_) {
            thread.join();
        }
        threads_.clear();
        return notes_;
    }

    std::mutex mutex_;
    std::vector<std::string> notes_;
    std::vector<std::thread> threads_;
};

TEST_F(SequencerTest, TurnsRunOneAtATimeInLineOrderWhoeverWaitsFirst)
{
    Sequencer::Turn turn;
    {
        Sequencer::Hold hold;
        EXPECT_TRUE(Sequencer::Holding());
        const Sequencer::Turn a = Sequencer::Reserve();
        const Sequencer::Turn b = Sequencer::Reserve();
        const Sequencer::Turn handOff = Sequencer::ReserveFirst();
        turn = Sequencer::Reserve();
        // Waiters start in the reverse order; the line decides.
        TakeLater(b, "b");
        TakeLater(a, "a");
        TakeLater(handOff, "hand-off");
        Note("holder");
    }
    EXPECT_FALSE(Sequencer::Holding());
    Sequencer::Cancel(turn);
    EXPECT_THAT(JoinAll(), ElementsAre("holder", "hand-off", "a", "b"));
}

TEST_F(SequencerTest, CancelledTurnReleasesItsTakerAndTheLineMovesOn)
{
    const uint64_t progress = Sequencer::Progress();
    Sequencer::Turn cancelled;
    {
        Sequencer::Hold hold;
        cancelled = Sequencer::Reserve();
        TakeLater(cancelled, "first");
        TakeLater(Sequencer::Reserve(), "second");
        Sequencer::Cancel(cancelled);
        // Nested holds and a second cancel change nothing.
        Sequencer::Hold nested;
        Sequencer::Cancel(cancelled);
    }
    EXPECT_THAT(JoinAll(), testing::UnorderedElementsAre("first cancelled", "second"));
    EXPECT_EQ(Sequencer::Progress(), progress + 2);
}

TEST_F(SequencerTest, YieldLetsWaitingTurnsRunAndTakesTheBatonBackFirst)
{
    {
        Sequencer::Hold hold;
        TakeLater(Sequencer::Reserve(), "waiting");
        {
            Sequencer::Yield yield;
            EXPECT_FALSE(Sequencer::Holding());
            threads_.back().join();
            threads_.pop_back();
        }
        EXPECT_TRUE(Sequencer::Holding());
        TakeLater(Sequencer::Reserve(), "after");
        Note("holder again");
    }
    EXPECT_THAT(JoinAll(), ElementsAre("waiting", "holder again", "after"));
}

}  // namespace
}  // namespace Tarvo
