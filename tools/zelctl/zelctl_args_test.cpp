#include "zelctl_args.h"

#include <gtest/gtest.h>

namespace Tarvo::Zelctl {
namespace {
struct Case {
    std::vector<std::string> args;
    const char* error;  // nullptr: parses
};

TEST(ZelctlArgs, RefusesWhatIsNotACommand)
{
    const Case cases[] = {
        {{}, "a command is needed"},
        {{"--dir"}, "--dir needs a value"},
        {{"frobnicate"}, "unknown command 'frobnicate'"},
        {{"scene", "com.a", "X"}, "wrong number of arguments"},
        {{"scene", "com.a", "X", "on"}, "STATE is not a number: 'on'"},
        {{"scene", "com.a", "X", "1", "--bogus"}, "unknown option '--bogus'"},
        {{"scene", "com.a", "X", "1", "--as"}, "--as needs a value"},
        {{"resolution", "1"}, "wrong number of arguments"},
        {{"resolution", "1", "x"}, "FLAG is not a number: 'x'"},
        {{"resolution", "99999999999999999999", "0"}, "MODE is not a number: '99999999999999999999'"},
        {{"thermal"}, "wrong number of arguments"},
        {{"thermal", "101"}, "not KEY=VALUE: '101'"},
        {{"thermal", "101=a"}, "VALUE is not a number: 'a'"},
        {{"gamefps", "com.a"}, "wrong number of arguments"},
        {{"dump", "extra"}, "wrong number of arguments"},
        {{"gamefps", "com.a", "60", "--json"}, "unknown option '--json'"},
        {{"listen"}, "listen needs --as BUNDLE"},
        {{"listen", "--as", "com.a", "cb", "more"}, "wrong number of arguments"},
    };
    for (const Case& c : cases) {
        Command command;
        std::string error;
        EXPECT_FALSE(ParseArgs(c.args, &command, &error)) << c.error;
        EXPECT_EQ(error, c.error);
    }
}

TEST(ZelctlArgs, ReadsEachCommand)
{
    Command command;
    std::string error;
    ASSERT_TRUE(ParseArgs({"--dir", "/r", "scene", "com.a", "X", "4294967297", "--as", "shell"}, &command, &error));
    EXPECT_EQ(command.verb, Verb::SCENE);
    EXPECT_EQ(command.runDir, "/r");
    EXPECT_EQ(command.as, "shell");
    EXPECT_EQ(command.state, 1u);  // the low 32 bits travel

    command = {};
    ASSERT_TRUE(ParseArgs({"resolution", "-1", "2"}, &command, &error)) << error;
    EXPECT_EQ(command.mode, -1);
    EXPECT_EQ(command.flag, 2);

    command = {};
    ASSERT_TRUE(ParseArgs({"thermal", "101=90", "7=1", "101=60"}, &command, &error)) << error;
    using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;
    EXPECT_EQ(command.thermal, (Pairs{{101, 90}, {7, 1}, {101, 60}}));

    command = {};
    ASSERT_TRUE(ParseArgs({"dump", "--json", "--dir", "/x"}, &command, &error));
    EXPECT_TRUE(command.json);
    EXPECT_EQ(command.runDir, "/x");

    command = {};
    ASSERT_TRUE(ParseArgs({"listen", "--as", "com.game", "cb7"}, &command, &error));
    EXPECT_EQ(command.as, "com.game");
    EXPECT_EQ(command.callbackName, "cb7");
}

TEST(ZelctlArgs, HelpAnywhereNamesItsCommand)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--help"}, ""},
        {{"gamefps", "--help"}, "gamefps"},
        {{"--dir", "/r", "listen", "-h"}, "listen"},
        {{"nonsense", "--help"}, ""},
    };
    for (const auto& [args, topic] : cases) {
        Command command;
        std::string error;
        ASSERT_TRUE(ParseArgs(args, &command, &error));
        EXPECT_EQ(command.verb, Verb::HELP);
        EXPECT_EQ(command.topic, topic);
        EXPECT_NE(Usage(topic).find("usage: zelctl"), std::string::npos);
    }
    EXPECT_NE(Usage("listen").find("listen --as BUNDLE [CBNAME]"), std::string::npos);
}
}  // namespace
}  // namespace Tarvo::Zelctl
