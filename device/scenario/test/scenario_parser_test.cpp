#include "scenario_parser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <tuple>

#include "raw_fields.h"

namespace Tarvo::Emu {
namespace {

class ScenarioParserTest : public testing::Test {
protected:
    ParseResult Parse(const std::string& text) { return ScenarioParser::Parse(text, "s.scn", testing::TempDir()); }

    template <typename T>
    const T& Command(const ParseResult& result, size_t index)
    {
        const T* command = std::get_if<T>(&result.scenario.lines.at(index).command);
        EXPECT_NE(command, nullptr) << "line " << index;
        static const T none{};
        return command != nullptr ? *command : none;
    }

    // Each error names its line and says what is wrong.
    void ExpectErrors(const std::string& text, const std::vector<std::pair<int, std::string>>& expected)
    {
        const ParseResult result = Parse(text);
        ASSERT_EQ(result.errors.size(), expected.size()) << testing::PrintToString(result.errors);
        for (size_t i = 0; i < expected.size(); ++i) {
            const std::string prefix = "s.scn:" + std::to_string(expected[i].first) + ": ";
            EXPECT_EQ(result.errors[i].rfind(prefix, 0), 0u) << result.errors[i];
            EXPECT_NE(result.errors[i].find(expected[i].second), std::string::npos) << result.errors[i];
        }
    }
};

TEST_F(ScenarioParserTest, WordsQuotesCommentsAndTimes)
{
    const ParseResult result = Parse(
        "\xEF\xBB\xBF# a comment line\n"
        "\n"
        "0 boot   # after content\n"
        "+200 scene \"com.a b\" \"\" 1\n"
        "expect log msg=\"FrameRate # not a comment\"\n"
        "1500 event \"usual.event.A=B\" bundle=\"x y\"\r\n"
        "1500 light 3 on\n");
    ASSERT_TRUE(result.Ok()) << testing::PrintToString(result.errors);
    const auto& lines = result.scenario.lines;
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0].line, 3);
    EXPECT_EQ(lines[1].time, 200);
    EXPECT_EQ(lines[2].time, 200);
    EXPECT_EQ(lines[3].time, 1500);
    EXPECT_EQ(Command<Cmd::Scene>(result, 1).pkg, "com.a b");
    EXPECT_EQ(Command<Cmd::Scene>(result, 1).scene, "");
    const auto& expect = Command<Cmd::Expect>(result, 2);
    ASSERT_EQ(expect.fields.size(), 1u);
    EXPECT_EQ(expect.fields[0].second, "FrameRate # not a comment");
    EXPECT_EQ(Command<Cmd::Event>(result, 3).action, "usual.event.A=B");
    EXPECT_EQ(Command<Cmd::Event>(result, 3).bundle, "x y");
    // No end line: the run ends 10 s after the last one.
    EXPECT_EQ(result.scenario.endTime, 11500);
    EXPECT_EQ(Parse("").scenario.endTime, 10000);
    EXPECT_EQ(Parse("0 boot\n+300 end\n").scenario.endTime, 300);
}

TEST_F(ScenarioParserTest, NumbersSentAsGivenAreTruncatedTo32Bits)
{
    const ParseResult result = Parse(
        "0 boot\n"
        "0 scene com.a S 4294967297\n"
        "0 resolution -1 2147483648\n"
        "0 thermal 1=90 -1=9223372036854775807 1=60 as=shell\n"
        "0 gamefps com.g -4294967295\n"
        "0 appstate com.tarvo.systemui 8589934594 pid=12 focus=1\n");
    ASSERT_TRUE(result.Ok()) << testing::PrintToString(result.errors);
    EXPECT_EQ(Command<Cmd::Scene>(result, 1).state, 1u);
    EXPECT_EQ(Command<Cmd::Scene>(result, 1).caller.kind, CallerSpec::Kind::SYSTEM);
    EXPECT_EQ(Command<Cmd::Resolution>(result, 2).mode, -1);
    EXPECT_EQ(Command<Cmd::Resolution>(result, 2).flag, INT32_MIN);
    EXPECT_EQ(Command<Cmd::Resolution>(result, 2).caller.kind, CallerSpec::Kind::NATIVE);
    const auto& thermal = Command<Cmd::Thermal>(result, 3);
    EXPECT_EQ(thermal.map, (std::vector<std::pair<uint32_t, uint32_t>>{{1, 90}, {UINT32_MAX, UINT32_MAX}, {1, 60}}));
    EXPECT_EQ(thermal.caller.kind, CallerSpec::Kind::SHELL);
    EXPECT_EQ(Command<Cmd::GameFps>(result, 4).fps, 1u);
    const auto& state = Command<Cmd::AppState>(result, 5);
    EXPECT_EQ(state.state, 2);
    EXPECT_EQ(state.pid, 12);
    EXPECT_EQ(state.focus, true);
}

TEST_F(ScenarioParserTest, InstalledBundlesAreTrackedThroughTheFile)
{
    const ParseResult result = Parse(
        "0 pkg.install com.g uid=20010100 game type=3\n"
        "0 pkg.install com.s system\n"
        "0 boot\n"
        "0 scene com.x S 1 as=com.g\n"
        "0 register com.g cb1\n"
        "0 fg com.tarvo.vistadeck\n"
        "0 pkg.remove com.g\n"
        "0 gamefps com.g 30 as=com.s\n");
    ASSERT_TRUE(result.Ok()) << testing::PrintToString(result.errors);
    const Package& game = Command<Cmd::Install>(result, 0).package;
    EXPECT_EQ(game.uid, 20010100);
    EXPECT_TRUE(game.game);
    EXPECT_FALSE(game.system);
    EXPECT_EQ(game.type, 3);
    EXPECT_TRUE(Command<Cmd::Install>(result, 1).package.system);
    EXPECT_EQ(Command<Cmd::Scene>(result, 3).caller.bundle, "com.g");
    EXPECT_EQ(Command<Cmd::AppState>(result, 5).state, 2);

    ExpectErrors(
        "0 pkg.install com.g\n"
        "0 pkg.remove com.g\n"
        "0 boot\n"
        "0 register com.g cb\n"
        "0 scene p s 1 as=com.g\n"
        "0 pkg.install com.h uid=20010000\n"
        "0 pkg.install com.tarvo.systemui\n"
        "0 proc.kill com.none\n",
        {{4, "not installed"},
         {5, "as='com.g'"},
         {6, "taken by com.tarvo.vistadeck"},
         {7, "already installed"},
         {8, "not installed"}});
}

TEST_F(ScenarioParserTest, EveryErrorIsReportedWithItsLine)
{
    ExpectErrors(
        "1x powermode 1\n"
        "100 boot\n"
        "50 powermode 1\n"
        "+10\n"
        "200 dance\n"
        "200 scene a \"b 1\n"
        "200 light 1 \xFF\n"
        "200 scene a b\n"
        "200 scene a b 1 who=me\n"
        "200 scene a b 1 as=x as=y\n"
        "200 resolution 1 0x10\n"
        "200 gamefps p 99999999999999999999\n"
        "200 param k v\n"
        "200 boot\n"
        "200 expect mox.refesh\n"
        "200 expect mox.refresh speed=1\n"
        "200 light 1 maybe\n"
        "200 fg com.tarvo.systemui focus=2 pid=x\n"
        "200 end\n"
        "300 boot\n",
        {{1, "not a time"},
         {3, "time goes back"},
         {4, "a command must follow"},
         {5, "unknown command 'dance'"},
         {6, "unterminated"},
         {7, "UTF-8"},
         {8, "too few arguments"},
         {9, "unknown option 'who'"},
         {10, "given twice"},
         {11, "not a decimal integer"},
         {12, "not a decimal integer within 64 bits"},
         {13, "only allowed before boot"},
         {14, "already booted"},
         {15, "no trace event is called 'mox.refesh'"},
         {16, "no field 'speed'"},
         {17, "STATE 'maybe'"},
         {18, "pid 'x'"},
         {20, "nothing may follow end"}});
    ExpectErrors("0 scene a b 1\n0 config none\n0 boot\n0 config none\n",
                 {{1, "only allowed after boot"}, {4, "only allowed before boot"}});
}

TEST_F(ScenarioParserTest, RawRequestsTakeTypedFieldsATokenATargetAndOneWay)
{
    using Kind = RawField::Kind;
    const ParseResult result = Parse(
        "0 pkg.install com.g game\n"
        "0 boot\n"
        "0 register com.g cb\n"
        "0 raw 4294967298 s:\"a b=c\" i:-1 u:7 b:1 i32v:-1,2 u32v: hex:0aFF\n"
        "0 raw 0 oneway token=none as=native\n"
        "0 raw 0 u:30 to=com.g:cb token=Other oneway\n");
    ASSERT_TRUE(result.Ok()) << testing::PrintToString(result.errors);
    const RawRequest& full = Command<Cmd::Raw>(result, 3).request;
    EXPECT_EQ(full.code, 2u);
    EXPECT_EQ(full.caller.kind, CallerSpec::Kind::SYSTEM);
    EXPECT_TRUE(full.writeToken);
    EXPECT_EQ(full.token, std::nullopt);
    EXPECT_FALSE(full.oneWay);
    EXPECT_TRUE(full.bundle.empty());
    std::vector<std::tuple<Kind, std::string, std::vector<uint32_t>>> fields;
    for (const RawField& field : full.fields) {
        fields.emplace_back(field.kind, field.text, field.words);
    }
    EXPECT_EQ(fields, (decltype(fields){{Kind::STRING, "a b=c", {}},
                                        {Kind::INT32, "", {UINT32_MAX}},
                                        {Kind::UINT32, "", {7}},
                                        {Kind::BOOL, "", {1}},
                                        {Kind::INT32_VECTOR, "", {UINT32_MAX, 2}},
                                        {Kind::UINT32_VECTOR, "", {}},
                                        {Kind::BYTES, "\x0a\xff", {}}}));
    const RawRequest& bare = Command<Cmd::Raw>(result, 4).request;
    EXPECT_FALSE(bare.writeToken);
    EXPECT_TRUE(bare.oneWay);
    EXPECT_EQ(bare.caller.kind, CallerSpec::Kind::NATIVE);
    const RawRequest& toCallback = Command<Cmd::Raw>(result, 5).request;
    EXPECT_EQ(toCallback.bundle, "com.g");
    EXPECT_EQ(toCallback.callback, "cb");
    EXPECT_EQ(toCallback.token, u"Other");
}

TEST_F(ScenarioParserTest, RawFieldsAreCheckedAndBounded)
{
    const std::string tooMany = "0 raw 2 u32v:" + std::string(kMaxRawElements, ',') + "\n";
    const std::string tooLong = "0 raw 2 hex:" + std::string(2 * kMaxRawBytes + 2, 'a') + "\n";
    ExpectErrors(
        "0 raw 1\n"
        "0 pkg.install com.g game\n"
        "0 boot\n"
        "0 raw\n"
        "0 raw 1 x:1\n"
        "0 raw 1 word\n"
        "0 raw 1 b:2\n"
        "0 raw 1 hex:abc\n"
        "0 raw 1 hex:zz\n"
        "0 raw 1 i32v:1,,2\n"
        "0 raw 1 u:x\n"
        "0 raw 1 to=com.g:cb\n"
        "0 register com.g cb\n"
        "0 raw 1 to=com.g:cb as=com.g\n"
        "0 raw 1 to=com.g:cb as=com.x\n"
        "0 raw 1 bogus=1\n" +
            tooMany + tooLong,
        {{1, "only allowed after boot"},
         {4, "too few arguments"},
         {5, "unknown field kind 'x'"},
         {6, "'word' is neither oneway nor a field"},
         {7, "b: takes 0 or 1, not '2'"},
         {8, "even number of digits"},
         {9, "'zz' is not two hex digits"},
         {10, "element '' is not a decimal"},
         {11, "u: 'x' is not a decimal"},
         {12, "names no callback"},
         {14, "the caller's own process"},
         {15, "as='com.x'"},
         {16, "unknown option 'bogus'"},
         {17, "at most 65536"},
         {18, "at most 262144 bytes"}});
}

TEST_F(ScenarioParserTest, DumpTakesNothingAndItsExpectReadsIntoTheState)
{
    const ParseResult result = Parse("0 boot\n+0 dump\n+0 expect dump line=2 state/games/targets/com.a=60\n");
    ASSERT_TRUE(result.Ok()) << testing::PrintToString(result.errors);
    Command<Cmd::Dump>(result, 1);
    EXPECT_EQ(Command<Cmd::Expect>(result, 2).fields,
              (std::vector<std::pair<std::string, std::string>>{{"line", "2"}, {"state/games/targets/com.a", "60"}}));
    ExpectErrors("0 dump\n+0 boot\n+0 dump now\n+0 dump as=shell\n+0 expect dump stat/x=1\n+0 expect dump st=1\n",
                 {{1, "dump: a request to the service is only allowed after boot"},
                  {3, "dump"},
                  {4, "as"},
                  {5, "dump has no field 'stat/x'"},
                  {6, "dump has no field 'st' (fields: line, state)"}});
}

TEST_F(ScenarioParserTest, MessagesQuoteInputEscapedAndShort)
{
    const ParseResult result = Parse(
        "0 dance\x1b[2J\x07\n"
        "0 " +
        std::string(1 << 20, 'z') +
        "\n"
        "0 light \x1b]0;title\x07 on\n");
    ASSERT_EQ(result.errors.size(), 3u);
    EXPECT_EQ(result.errors[0], "s.scn:1: unknown command 'dance\\x1b[2J\\x07'");
    EXPECT_EQ(result.errors[1], "s.scn:2: unknown command '" + std::string(kShownChars, 'z') + "...'");
    EXPECT_EQ(result.errors[2],
              "s.scn:3: light: TYPE '\\x1b]0;title\\x07' is not a decimal integer from 0 to 4294967295");
}

TEST_F(ScenarioParserTest, AScenarioLastsAtMostOneDay)
{
    EXPECT_EQ(Parse("0 boot\n86400000 end\n").scenario.endTime, Scenario::kMaxTime);
    EXPECT_TRUE(Parse("0 boot\n86390000 powermode 1\n").Ok());
    ExpectErrors("0 sa.down 4607\n0 boot\n1000000000000 end\n", {{3, "lies beyond one day (86400000 ms)"}});
    ExpectErrors("0 boot\n86000000 powermode 1\n+400001 powermode 2\n+99999999999999999 powermode 3\n+0 end\n",
                 {{3, "'+400001' lies beyond one day"}, {4, "'+99999999999999999' lies beyond one day"}});
    ExpectErrors("0 boot\n86395000 powermode 1\n",
                 {{2, "the run would end at 86405000 ms, 10000 ms after this line, beyond one day"}});
}

TEST_F(ScenarioParserTest, DefaultUidsStayWithinTheSignedRange)
{
    ASSERT_TRUE(Parse("0 pkg.install com.a uid=2147483646\n0 pkg.install com.b\n").Ok());
    ExpectErrors("0 pkg.install com.a uid=2147483647\n0 pkg.install com.b\n0 pkg.install com.c uid=5\n",
                 {{2, "the next uid, 2147483648, is beyond the 32-bit range"}});
    ExpectErrors("0 pkg.install com.a uid=2147483648\n", {{1, "uid '2147483648' is not a decimal integer"}});
}

TEST_F(ScenarioParserTest, ConfigIsFoundBesideTheScenario)
{
    std::ofstream(testing::TempDir() + "/parser_test_config.xml") << "<config/>";
    const ParseResult found = Parse("0 config parser_test_config.xml\n");
    ASSERT_TRUE(found.Ok()) << testing::PrintToString(found.errors);
    EXPECT_EQ(Command<Cmd::Config>(found, 0).path,
              (std::filesystem::path(testing::TempDir()) / "parser_test_config.xml").string());
    EXPECT_EQ(Command<Cmd::Config>(Parse("0 config none\n"), 0).path, std::nullopt);
    ExpectErrors("0 config missing.xml\n0 config none\n0 config none\n", {{1, "no file"}, {3, "already chosen"}});
    EXPECT_EQ(ScenarioParser::ParseFile(testing::TempDir() + "/no_such.scn").errors.size(), 1u);
}

}  // namespace
}  // namespace Tarvo::Emu
