#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "device_tap.h"
#include "interrupt_cleanup.h"
#include "raw_parcel.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {

std::string Hex(const Parcel& parcel)
{
    std::string out;
    for (size_t i = 0; i < parcel.GetDataSize(); ++i) {
        char byte[4];
        snprintf(byte, sizeof(byte), "%02x", parcel.GetData()[i]);
        out += (i == 0 || i % 4 != 0 ? "" : " ") + std::string(byte);
    }
    return out;
}

RawField Field(RawField::Kind kind, std::vector<uint32_t> words, std::string text = {})
{
    return RawField{kind, std::move(text), std::move(words)};
}

TEST(RawParcelTest, TokenThenEachFieldInTheParcelsEncodings)
{
    using Kind = RawField::Kind;
    RawRequest request;
    request.fields = {Field(Kind::STRING, {}, "ab"),
                      Field(Kind::INT32, {0xFFFFFFFE}),
                      Field(Kind::UINT32, {7}),
                      Field(Kind::BOOL, {1}),
                      Field(Kind::INT32_VECTOR, {0xFFFFFFFF, 2}),
                      Field(Kind::UINT32_VECTOR, {}),
                      Field(Kind::BYTES, {}, "\x0a\x0b\x0c\x0d\x0e")};
    MessageParcel data;
    ASSERT_TRUE(WriteRawRequest(request, u"D", data));
    EXPECT_EQ(Hex(data),
              "01000000 44000000 "                    // token u"D"
              "02000000 61620000 "                    // s:ab
              "feffffff 07000000 01000000 "           // i:-2 u:7 b:1
              "02000000 ffffffff 02000000 00000000 "  // i32v:-1,2 u32v:
              "0a0b0c0d 0e000000");                   // hex:0a0b0c0d0e, padded

    RawRequest bare;
    bare.writeToken = false;
    bare.fields = {Field(Kind::UINT32, {1})};
    MessageParcel noToken;
    ASSERT_TRUE(WriteRawRequest(bare, u"D", noToken));
    EXPECT_EQ(Hex(noToken), "01000000");

    RawRequest given;
    given.token = u"Xy";
    MessageParcel own;
    ASSERT_TRUE(WriteRawRequest(given, u"D", own));
    EXPECT_EQ(Hex(own), "02000000 58007900 00000000");

    // More than a parcel holds: refused, nothing sent.
    RawRequest oversized;
    oversized.fields = {Field(Kind::BYTES, {}, std::string(Parcel::DEFAULT_CPACITY, 'x'))};
    MessageParcel full;
    EXPECT_FALSE(WriteRawRequest(oversized, u"D", full));
}

class DeviceTapTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }

    static TransactionRecord Record(uint64_t tag, std::u16string descriptor, int32_t targetPid = 1000)
    {
        TransactionRecord record;
        record.descriptor = std::move(descriptor);
        record.code = 1;
        record.status = 0;
        record.targetPid = targetPid;
        record.tag = tag;
        return record;
    }
    static HiviewDFX::LogRecord Log(int32_t pid, std::string message, uint32_t domain = 0xD004608)
    {
        HiviewDFX::LogRecord record;
        record.domain = domain;
        record.level = HiviewDFX::LOG_ERROR;
        record.message = std::move(message);
        record.pid = pid;
        return record;
    }
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (const auto& event : trace_.EventsSince(0)) {
            lines.push_back(event.Json());
        }
        return lines;
    }

    Trace trace_;
    std::shared_ptr<DeviceTap> tap_ = std::make_shared<DeviceTap>(trace_);
};

TEST_F(DeviceTapTest, TracesTheServiceAndTheWatchedCallbackOnly)
{
    const std::u16string manager = u"Tarvo.IZelManager";
    const std::u16string callback = u"Tarvo.Vantel.IZelCallbackInterface";
    tap_->SetServicePid(1000);
    MessageParcel reply;
    reply.WriteInt32(-1);
    TransactionRecord withReply = Record(4, manager);
    withReply.reply = &reply;

    tap_->Watch(4, manager);
    EXPECT_FALSE(tap_->Delivered());
    tap_->OnTransaction(Record(0, manager));      // untagged: not a scenario line's
    tap_->OnTransaction(Record(4, callback, 7));  // the service calling a game back for line 4
    EXPECT_FALSE(tap_->Delivered());
    tap_->OnTransaction(withReply);
    EXPECT_TRUE(tap_->Delivered());
    tap_->OnLog(Log(1000, "service line"));
    tap_->OnLog(Log(1000, "a library's line in the service's process", 0xD003900));
    tap_->OnLog(Log(7, "game line, nobody asked"));

    tap_->Watch(9, callback, 7, "com.g");
    EXPECT_FALSE(tap_->Delivered());
    {
        IPCTransport::ScopedTag tag(9);  // as on the game's thread handling line 9's request
        tap_->OnLog(Log(7, "callback line"));
    }
    tap_->OnLog(Log(7, "after the request"));
    tap_->OnTransaction(Record(9, callback, 7));
    EXPECT_TRUE(tap_->Delivered());

    EXPECT_EQ(Lines(),
              (std::vector<std::string>{R"({"t":0,"ev":"ipc.done","line":4,"code":1,"status":0,"reply":-1})",
                                        R"({"t":0,"ev":"log","level":"E","msg":"service line"})",
                                        R"({"t":0,"ev":"app.log","bundle":"com.g","level":"E","msg":"callback line"})",
                                        R"({"t":0,"ev":"ipc.done","line":9,"code":1,"status":0,"reply":null})"}));
}

TEST_F(DeviceTapTest, NothingReachesTheTraceOnceDetached)
{
    tap_->SetServicePid(1000);
    tap_->Watch(3, u"Tarvo.IZelManager");
    tap_->Detach();
    tap_->OnLog(Log(1000, "late line"));
    tap_->OnTransaction(Record(3, u"Tarvo.IZelManager"));
    tap_->Emit("game.fps", {});
    EXPECT_EQ(trace_.Size(), 0u);
}

TEST(InterruptCleanupTest, ASignalRemovesTheRegisteredFoldersAndEndsTheProcess)
{
    const std::filesystem::path kept = testing::TempDir() + "/interrupt_kept_" + std::to_string(getpid());
    const std::filesystem::path removed = testing::TempDir() + "/interrupt_removed_" + std::to_string(getpid());
    std::filesystem::create_directories(kept);
    std::filesystem::create_directories(removed / "system");
    EXPECT_EXIT(
        {
            HandleInterrupts();
            RemoveOnInterrupt(removed.string());
            RemoveOnInterrupt(kept.string());
            KeepOnInterrupt(kept.string());
            kill(getpid(), SIGTERM);
            pause();
        },
        testing::ExitedWithCode(128 + SIGTERM), "zel_device: interrupted \\(SIGTERM\\)");
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_TRUE(std::filesystem::exists(kept));
    std::filesystem::remove_all(kept);
}

}  // namespace
}  // namespace Tarvo::Emu
