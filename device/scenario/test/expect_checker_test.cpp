#include "expect_checker.h"

#include <gtest/gtest.h>

#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {

class ExpectCheckerTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }
    void Refresh(const std::string& desc, bool status, int64_t max)
    {
        trace_.Emit("mox.refresh", {{"name", std::string("VOTER_SCENE")},
                                    {"status", status},
                                    {"min", int64_t{0}},
                                    {"max", max},
                                    {"desc", desc}});
    }
    bool Check(const std::string& ev, std::vector<std::pair<std::string, std::string>> fields, bool none = false)
    {
        last_ = checker_.Check(Cmd::Expect{ev, std::move(fields), none}, trace_);
        return last_.ok;
    }

    Trace trace_;
    ExpectChecker checker_;
    ExpectChecker::Result last_;
};

TEST_F(ExpectCheckerTest, WindowMovesPastTheMatchOnlyWhenAnExpectHolds)
{
    Refresh("A", true, 90);
    Refresh("B", true, 60);
    Refresh("A", false, 0);

    EXPECT_TRUE(Check("mox.refresh", {{"desc", "B"}, {"status", "true"}}));
    EXPECT_EQ(checker_.WindowStart(), 2u);
    // A's begin came before B's: out of this window now; a failure does not move it.
    EXPECT_FALSE(Check("mox.refresh", {{"desc", "A"}, {"status", "true"}}));
    ASSERT_EQ(last_.seen.size(), 1u);
    EXPECT_EQ(last_.seen[0]->Json(),
              R"({"t":0,"ev":"mox.refresh","name":"VOTER_SCENE","status":false,"min":0,"max":0,"desc":"A"})");
    EXPECT_EQ(checker_.WindowStart(), 2u);
    // expect.none looks at the same window and never moves it.
    EXPECT_TRUE(Check("mox.refresh", {{"desc", "B"}}, true));
    EXPECT_FALSE(Check("mox.refresh", {{"max", "0"}}, true));
    EXPECT_EQ(last_.seen.size(), 1u);
    EXPECT_EQ(checker_.WindowStart(), 2u);
    EXPECT_TRUE(Check("mox.refresh", {{"status", "false"}, {"max", "0"}}));
    EXPECT_EQ(checker_.WindowStart(), 3u);
    // An empty window: expect fails with nothing seen, expect.none holds.
    EXPECT_FALSE(Check("mox.refresh", {}));
    EXPECT_TRUE(last_.seen.empty());
    EXPECT_TRUE(Check("mox.refresh", {}, true));
}

TEST_F(ExpectCheckerTest, FieldsCompareAsTextArraysByElementAndMessagesWhole)
{
    trace_.Emit("mox.package", {{"pkgs", std::vector<std::string>{"com.a:0:-1", "com.b:1:2"}}});
    trace_.Emit("log",
                {{"level", std::string("I")}, {"msg", std::string("SetPowerModeFrameRate send to MOX success")}});
    trace_.Emit("ipc.done", {{"line", int64_t{4}}, {"status", int64_t{0}}, {"reply", nullptr}});

    EXPECT_FALSE(Check("mox.package", {{"pkgs", "com.a"}}, false));
    EXPECT_FALSE(Check("log", {{"msg", "send to MOX success"}}));
    EXPECT_FALSE(Check("ipc.done", {{"code", "0"}}));  // a field the event lacks never holds
    EXPECT_TRUE(Check("mox.package", {{"pkgs", "com.b:1:2"}}));
    EXPECT_TRUE(Check("log", {{"level", "I"}, {"msg", "SetPowerModeFrameRate send to MOX success"}}));
    EXPECT_TRUE(Check("ipc.done", {{"line", "4"}, {"reply", "null"}}));
}

// A dump's state is read along a path; each case looks at the same event afresh.
TEST_F(ExpectCheckerTest, PathsReadIntoAnObjectField)
{
    const std::string state = R"({"a":{"b.c":[1,"x\"y",true],"e":[],"o":{},"n":null,)"
                              R"("list":[{"k":"v0"},{"k":"v1"}]},"t":"t\u0041\n"})";
    struct Case {
        std::string field;
        std::string expected;
        bool holds;
    };
    const std::vector<Case> cases = {
        {"state/a/b.c", "1", true},     // an array of scalars: any element
        {"state/a/b.c", "x\"y", true},  // strings unescaped
        {"state/a/b.c", "true", true},
        {"state/a/b.c", "2", false},
        {"state/a/e", "[]", true},  // empty array
        {"state/a/b.c", "[]", false},
        {"state/a/o", "{}", true},  // an object stays JSON
        {"state/a/n", "null", true},
        {"state/a/list/1/k", "v1", true},   // indexes into arrays
        {"state/a/list/2/k", "v1", false},  // past the end
        {"state/a/list/x", "v0", false},
        {"state/t", "tA\n", true},
        {"state/a/missing", "", false},
        {"state/t/deeper", "tA\n", false},  // a string has no members
        {"line/x", "1", false},             // not an object field
        {"state", state, true},             // the whole object as written
    };
    for (const Case& c : cases) {
        ExpectChecker checker;
        Trace trace;
        trace.Emit("dump", {{"line", int64_t{1}}, {"state", TraceObject{state}}});
        EXPECT_EQ(checker.Check(Cmd::Expect{"dump", {{c.field, c.expected}}, false}, trace).ok, c.holds)
            << c.field << "=" << c.expected;
    }
}

// As the player runs it: every check adds its own expect event to the trace.
TEST_F(ExpectCheckerTest, ManyChecksCostWhatTheyReadNotTheWholeWindowEachTime)
{
    constexpr size_t kLines = 20000;
    Refresh("A", true, 90);
    Refresh("B", true, 60);
    for (size_t line = 0; line < kLines; ++line) {
        if (line == kLines / 2) {
            Refresh("C", false, 0);
        }
        EXPECT_EQ(Check("mox.refresh", {{"desc", "C"}}, true), line < kLines / 2);
        EXPECT_EQ(last_.seen.size(), line < kLines / 2 ? 0u : 1u);
        EXPECT_TRUE(Check("log", {}, true));
        EXPECT_FALSE(Check("mox.light", {}));
        trace_.Emit("expect", {{"line", static_cast<int64_t>(line)}, {"ok", true}});
    }
    // Copying the window for each check would read about 3 * kLines * kLines / 2 events.
    EXPECT_LT(checker_.EventsRead(), 3 * kLines);
    EXPECT_EQ(checker_.WindowStart(), 0u);
    // An expect that holds moves the window: the expect.none starts over from there.
    EXPECT_TRUE(Check("mox.refresh", {{"desc", "C"}}));
    EXPECT_TRUE(Check("mox.refresh", {{"desc", "C"}}, true));
}

}  // namespace
}  // namespace Tarvo::Emu
