#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "event_handler.h"
#include "event_runner.h"
#include "forked_child.h"
#include "shared_time_page.h"
#include "virtual_clock.h"

namespace Tarvo {
namespace {
using namespace std::chrono_literals;
using AppExecFwk::EventHandler;
using AppExecFwk::EventRunner;
using Forked::Channel;
using Forked::ForkedChild;
using testing::ElementsAre;

enum Command : uint64_t { NEXT_DUE = 1, MOVE, QUIT, MOVED };
constexpr uint64_t kNothingDue = std::numeric_limits<uint64_t>::max();

PlatformClock::time_point At(uint64_t ms)
{
    return PlatformClock::time_point(PlatformClock::duration(ms));
}

int64_t Now()
{
    return PlatformClock::now().time_since_epoch().count();
}

// The driver's process first, then the one at the other end of a channel: what a device's fleet
// does over its transport.
class ChannelFleet final : public VirtualTimeFleet {
public:
    explicit ChannelFleet(Channel other) : other_(other) {}

    std::optional<PlatformClock::time_point> NextDue() override
    {
        auto earliest = VirtualClock::NextDueHere();
        other_.Send(NEXT_DUE);
        const uint64_t there = other_.Expect();
        if (there != kNothingDue && (!earliest || At(there) < *earliest)) {
            earliest = At(there);
        }
        return earliest;
    }
    bool MoveTo(PlatformClock::time_point when) override
    {
        VirtualClock::MoveHere(when);
        other_.Send(MOVE);
        other_.Send(static_cast<uint64_t>(when.time_since_epoch().count()));
        return other_.Expect() == MOVED;
    }

private:
    Channel other_;
};

// The other end: answers the driver until it says to quit, on a thread that needs no turn.
void ServeFleet(const Channel& driver)
{
    for (uint64_t command = driver.Expect(); command != QUIT; command = driver.Expect()) {
        if (command == NEXT_DUE) {
            const auto due = VirtualClock::NextDueHere();
            driver.Send(due ? static_cast<uint64_t>(due->time_since_epoch().count()) : kNothingDue);
        } else {
            VirtualClock::MoveHere(At(driver.Expect()));
            driver.Send(MOVED);
        }
    }
}

class SharedClockTest : public Forked::SharedPageTest {
protected:
    void Install() const
    {
        std::string reason;
        CHILD_REQUIRE(VirtualClock::InstallShared(page_, reason));
    }
    void Note(const std::string& name) const { Forked::Note(journal_, name + "@" + std::to_string(Now())); }
};

TEST_F(SharedClockTest, ADriverMovesEveryProcessOfItsFleetInTurnAndWaitsForAllOfThem)
{
    auto [driverEnd, workerEnd] = Forked::ChannelPair();
    ForkedChild worker([&, this](Channel& test) {
        driverEnd.Close();
        Install();
        auto handler = std::make_shared<EventHandler>(EventRunner::Create("worker"));
        handler->PostTask(
            [this, handler] {
                Note("worker");
                handler->PostTask([this] { Note("worker again"); });
            },
            "", 10);
        handler->PostTask([this] { Note("worker"); }, "", 15);
        test.Send(1);
        ServeFleet(workerEnd);
        Note("worker ends");
        return 0;
    });
    ForkedChild driver([&, this](Channel& test) {
        workerEnd.Close();
        Install();
        auto handler = std::make_shared<EventHandler>(EventRunner::Create("driver"));
        handler->PostTask([this] { Note("driver"); }, "", 10);
        handler->PostTask([this] { Note("driver"); }, "", 20);
        VirtualClock::SetFleet(std::make_shared<ChannelFleet>(driverEnd));
        test.Expect();
        CHILD_REQUIRE(VirtualClock::AdvanceTo(At(30)));
        CHILD_REQUIRE(!VirtualClock::NextDue().has_value());
        driverEnd.Send(QUIT);
        return 0;
    });
    driverEnd.Close();
    workerEnd.Close();
    worker.Talk().Receive();
    driver.Talk().Send(1);
    EXPECT_EQ(driver.Wait(), 0);
    EXPECT_EQ(worker.Wait(), 0);
    // At 10 the driver's process reserved first; the worker's zero-delay task still runs at 10. The
    // worker reads every time the driver set.
    EXPECT_THAT(Forked::Lines(journal_),
                ElementsAre("driver@10", "worker@10", "worker again@10", "worker@15", "driver@20", "worker ends@30"));
}

}  // namespace
}  // namespace Tarvo
