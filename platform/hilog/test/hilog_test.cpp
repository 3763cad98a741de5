#include "hilog.h"

#include <gtest/gtest.h>

#include "virtual_process.h"

namespace Tarvo::HiviewDFX {
namespace {

constexpr HiLogLabel kLabel = {LOG_CORE, 0xD004608, "ZEL_MANAGER"};

TEST(HiLogTest, PrivacyMarkersAreStrippedAndEveryArgumentPrinted)
{
    EXPECT_EQ(StripPrivacyMarkers("a %{public}d b %{private}s c %d %%{public}"), "a %d b %s c %d %%{public}");
    LogCapture capture;
    HiLog::Info(kLabel, "SetScene pkgName = %{public}s, scene = %{private}s, state = %{public}d", "com.a", "X", 1);
    auto records = capture.Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].message, "SetScene pkgName = com.a, scene = X, state = 1");
    EXPECT_EQ(records[0].level, LOG_INFO);
    EXPECT_EQ(records[0].domain, 0xD004608u);
    EXPECT_EQ(records[0].tag, "ZEL_MANAGER");
}

TEST(HiLogTest, LevelsLongMessagesAndTheLoggingProcess)
{
    LogCapture capture;
    HiLog::Debug(kLabel, "d");
    HiLog::Warn(kLabel, "w");
    HiLog::Error(kLabel, "e %d", -1);
    HiLogPrint(LOG_CORE, LOG_FATAL, 0xD004608, "ZEL_MANAGER", "f");
    std::string longText(3000, 'x');
    {
        ScopedProcess scope(VirtualProcess::Create({4242, 1, 0, 0, "p"}));
        HiLog::Info(kLabel, "%s", longText.c_str());
    }
    EXPECT_EQ(capture.Lines(), (std::vector<std::string>{"D d", "W w", "E e -1", "F f", "I " + longText}));
    EXPECT_EQ(capture.Records().back().pid, 4242);
    EXPECT_EQ(capture.Count(LOG_ERROR, "e -1"), 1u);
    EXPECT_FALSE(capture.Contains(LOG_INFO, "e -1"));
}

TEST(HiLogTest, HumanLineOnStderrHasTimeProcessLevelDomainAndTag)
{
    HiLogOutput::SetTimeSource([] { return int64_t{2500}; });
    testing::internal::CaptureStderr();
    HiLog::Warn(kLabel, "hello %{public}s", "there");
    std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find(" W D004608/ZEL_MANAGER: hello there\n"), std::string::npos) << line;
    EXPECT_NE(line.find(":02.500 "), std::string::npos) << line;
    HiLogOutput::SetStderrEnabled(false);
    testing::internal::CaptureStderr();
    HiLog::Warn(kLabel, "quiet");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Takes only the lines of one tag; counts what it was offered.
class TagSink : public LogSink {
public:
    explicit TagSink(std::string tag) : tag_(std::move(tag)) {}
    bool Accepts(const LogRecord& record) const override
    {
        EXPECT_TRUE(record.message.empty());  // asked before formatting
        return record.tag == tag_;
    }
    void OnLog(const LogRecord& record) override { lines.push_back(record.tag + ": " + record.message); }
    std::vector<std::string> lines;

private:
    std::string tag_;
};

TEST(HiLogTest, ALineIsFormattedOnlyForAnOutputThatTakesIt)
{
    HiLogOutput::SetStderrEnabled(false);
    EXPECT_FALSE(HiLogIsLoggable(kLabel.domain, kLabel.tag, LOG_FATAL));
    // %n would write through its argument if the line were ever formatted.
    EXPECT_EQ(HiLog::Fatal(kLabel, "nobody %n", static_cast<int*>(nullptr)), 0);
    auto sink = std::make_shared<TagSink>("ZEL_MANAGER");
    HiLogOutput::AddSink(sink);
    EXPECT_TRUE(HiLogIsLoggable(kLabel.domain, kLabel.tag, LOG_DEBUG));
    HiLog::Info({LOG_CORE, 0xD0057CA, "IPCDriver"}, "refused %n", static_cast<int*>(nullptr));
    HiLog::Debug(kLabel, "taken %d", 1);
    HiLogOutput::SetMinLevel(LOG_WARN);
    EXPECT_FALSE(HiLogIsLoggable(kLabel.domain, kLabel.tag, LOG_INFO));
    HiLog::Info(kLabel, "below %n", static_cast<int*>(nullptr));
    HiLog::Warn(kLabel, "at %d", 2);
    HiLogOutput::SetMinLevel(LOG_DEBUG);
    HiLogOutput::RemoveSink(sink);
    EXPECT_FALSE(HiLogIsLoggable(kLabel.domain, kLabel.tag, LOG_FATAL));
    EXPECT_EQ(sink->lines, (std::vector<std::string>{"ZEL_MANAGER: taken 1", "ZEL_MANAGER: at 2"}));
}

}  // namespace
}  // namespace Tarvo::HiviewDFX
