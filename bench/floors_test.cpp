// The floors must carry every message they are given and answer, or a benchmark of them would hang
// or measure less than it says; nothing here is timed.

#include <gtest/gtest.h>

#include <optional>

#include "floor_sockets.h"

namespace Tarvo::Bench {
namespace {

FloorMessage Numbered()
{
    FloorMessage message{};
    for (size_t i = 0; i < message.size(); ++i) {
        message[i] = static_cast<char>(i);
    }
    return message;
}

template <class Echo>
void ExpectEchoes(std::optional<int> cpu)
{
    Echo echo(cpu);
    ASSERT_TRUE(echo.Ok());
    for (int trip = 0; trip < 3; ++trip) {
        FloorMessage message = Numbered();
        ASSERT_TRUE(echo.RoundTrip(message));
        EXPECT_EQ(message, Numbered());
    }
}

TEST(FloorsTest, EchoesSendBackWhatTheyGetWhereverTheyRun)
{
    for (std::optional<int> cpu : {std::optional<int>(), std::optional<int>(0)}) {
        ExpectEchoes<SeqpacketEcho>(cpu);
        ExpectEchoes<SeqpacketProcessEcho>(cpu);
        EventfdPingPong pair(cpu);
        ASSERT_TRUE(pair.Ok());
        EXPECT_TRUE(pair.RoundTrip());
        EXPECT_TRUE(pair.RoundTrip());
    }
}

template <class Sink>
void ExpectBatchesArrive(uint64_t batch)
{
    Sink sink(batch);
    ASSERT_TRUE(sink.Ok());
    // A second batch finds the receiver as the first left it.
    EXPECT_TRUE(sink.SendBatch(Numbered()));
    EXPECT_TRUE(sink.SendBatch(Numbered()));
}

TEST(FloorsTest, OneWaySinksAnswerOnceAWholeBatchIsIn)
{
    for (uint64_t batch : {1u, 7u, 600u}) {
        ExpectBatchesArrive<QueueSink>(batch);
        ExpectBatchesArrive<SeqpacketSink>(batch);
        ExpectBatchesArrive<SeqpacketProcessSink>(batch);
    }
}

}  // namespace
}  // namespace Tarvo::Bench
