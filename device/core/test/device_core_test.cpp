#include <gtest/gtest.h>

#include "device_service_manager.h"
#include "input_text.h"
#include "ipc_object_stub.h"
#include "json_pointer.h"
#include "package_catalog.h"
#include "trace.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {

// Events are stamped with the platform clock: virtual here, so that "t" is 0 however slow the run.
class TraceTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }
};

TEST_F(TraceTest, EventsRenderAsOneJsonObjectWithFieldsInOrder)
{
    Trace trace;
    trace.Emit("mox.refresh", {{"name", std::string("VOTER_SCENE")},
                               {"status", true},
                               {"min", int64_t{0}},
                               {"desc", std::string("a \"quoted\"\\\n\x01")}});
    trace.Emit("mox.package", {{"pkgs", std::vector<std::string>{"com.a:0:-1", "b"}}, {"reply", nullptr}});
    auto events = trace.EventsSince(0);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(
        events[0].Json(),
        R"({"t":0,"ev":"mox.refresh","name":"VOTER_SCENE","status":true,"min":0,"desc":"a \"quoted\"\\\n\u0001"})");
    EXPECT_EQ(events[1].Json(), R"({"t":0,"ev":"mox.package","pkgs":["com.a:0:-1","b"],"reply":null})");
    EXPECT_EQ(ValueText(*events[0].Find("status")), "true");
    EXPECT_EQ(ValueText(*events[0].Find("name")), "VOTER_SCENE");
    EXPECT_EQ(events[0].Find("absent"), nullptr);
    EXPECT_EQ(trace.EventsSince(1).size(), 1u);
    EXPECT_TRUE(trace.EventsSince(5).empty());
}

TEST_F(TraceTest, TheHiddenFolderIsWrittenAsItsPlaceholderInEveryText)
{
    Trace trace;
    trace.Emit("log", {{"msg", std::string("/tmp/zel_device.a1 before hiding")}});
    trace.Hide("/tmp/zel_device.a1", "$DATA");
    trace.Emit("log", {{"msg", std::string("filePath: /tmp/zel_device.a1/system/x.xml, /tmp/zel_device.a1")},
                       {"level", std::string("/tmp/zel_device.a12 /tmp/zel_device.a1.old")},
                       {"pkgs", std::vector<std::string>{"/tmp/zel_device.a1", "b"}},
                       {"n", int64_t{1}}});
    const auto events = trace.EventsSince(0);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].Json(), R"({"t":0,"ev":"log","msg":"/tmp/zel_device.a1 before hiding"})");
    // Only the folder itself: a longer name that starts the same way is left alone.
    EXPECT_EQ(events[1].Json(), R"({"t":0,"ev":"log","msg":"filePath: $DATA/system/x.xml, $DATA",)"
                                R"("level":"/tmp/zel_device.a12 /tmp/zel_device.a1.old","pkgs":["$DATA","b"],"n":1})");
    EXPECT_EQ(&trace.At(1), &trace.At(1));
    EXPECT_EQ(trace.At(1).ev, "log");
}

TEST_F(TraceTest, AnObjectFieldIsWrittenAsItIsAndOnlyAWholeObjectIsOne)
{
    Trace trace;
    trace.Hide("/tmp/zel_device.a1", "$DATA");
    trace.Emit("dump", {{"line", int64_t{3}}, {"state", TraceObject{R"({"path":"/tmp/zel_device.a1/x","n":[1]})"}}});
    EXPECT_EQ(trace.At(0).Json(), R"({"t":0,"ev":"dump","line":3,"state":{"path":"$DATA/x","n":[1]}})");
    EXPECT_EQ(ValueText(*trace.At(0).Find("state")), R"({"path":"$DATA/x","n":[1]})");
    for (const std::string& good :
         std::vector<std::string>{"{}", " {\"a\":[{},[]],\"b\":\"\\u00e9\"} ", R"({"a":-1.5e3,"b":false})"}) {
        EXPECT_TRUE(IsJsonObject(good)) << good;
    }
    const std::string deep = std::string(70, '[') + std::string(70, ']');
    for (const std::string& bad :
         std::vector<std::string>{"", "[]", "{", "{} {}", R"({"a"})", R"({"a":})", R"({"a":"\u00zz"})",
                                  "{\"a\":" + deep + "}", R"({"a":1,})", R"({"a":tru})", R"({"a":1x})"}) {
        EXPECT_FALSE(IsJsonObject(bad)) << bad;
    }
}

TEST(InputTextTest, QuotedInputIsEscapedAndShortened)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"plain words", "plain words"},
        {"esc\x1b[31mred", "esc\\x1b[31mred"},
        {std::string("nul\0end", 7), "nul\\x00end"},
        {"\x1b[2J\x7f", "\\x1b[2J\\x7f"},
        {"back\\slash", "back\\\\slash"},
        {"caf\xc3\xa9 \xe2\x82\xac", "caf\xc3\xa9 \xe2\x82\xac"},  // printable UTF-8 kept
        {"c1 \xc2\x9b", "c1 \\xc2\\x9b"},                          // a C1 control is not
        {"bad \xff\xc3", "bad \\xff\\xc3"},
        {std::string(70, 'a'), std::string(64, 'a') + "..."},
        {std::string(64, 'a'), std::string(64, 'a')},
    };
    for (const auto& [input, shown] : cases) {
        EXPECT_EQ(Shown(input), shown) << input;
    }
    EXPECT_EQ(Shown(std::string(1 << 20, '\x1b')).size(), 64 * 4 + 3);
    EXPECT_EQ(Shown("\xc3\xa9\xc3\xa9\xc3\xa9", 2), "\xc3\xa9\xc3\xa9...");
}

TEST(InputTextTest, Utf8BecomesUtf16WithSurrogatePairs)
{
    EXPECT_EQ(Utf8ToUtf16("Tarvo.IZelManager"), u"Tarvo.IZelManager");
    EXPECT_EQ(Utf8ToUtf16("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"), u"\u00e9\u20ac\U0001F600");
    EXPECT_EQ(Utf8ToUtf16("a\xff"
                          "b"),
              u"a\ufffdb");
    EXPECT_TRUE(IsValidUtf8("\xf0\x9f\x98\x80"));
    for (const char* invalid : {"\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82"}) {
        EXPECT_FALSE(IsValidUtf8(invalid)) << invalid;
    }
}

TEST(PackageCatalogTest, DefaultPackagesUidsAndConflicts)
{
    PackageCatalog catalog;
    ASSERT_TRUE(catalog.FindByBundle("com.tarvo.vistadeck"));
    EXPECT_TRUE(catalog.FindByBundle("com.tarvo.systemui")->system);
    std::string error;
    ASSERT_TRUE(catalog.Install({"com.game", 0, true, false, 3}, &error));
    int32_t uid = catalog.FindByBundle("com.game")->uid;
    EXPECT_GT(uid, PackageCatalog::FIRST_UID);
    EXPECT_EQ(catalog.FindByUid(uid)->bundle, "com.game");
    EXPECT_FALSE(catalog.Install({"com.game", 0, false, false, std::nullopt}, &error));
    EXPECT_EQ(error, "package com.game is already installed");
    EXPECT_FALSE(catalog.Install({"com.other", uid, false, false, std::nullopt}, &error));
    EXPECT_EQ(error, "uid " + std::to_string(uid) + " is taken by com.game");
    EXPECT_TRUE(catalog.Remove("com.game"));
    EXPECT_FALSE(catalog.Remove("com.game"));
    EXPECT_FALSE(catalog.FindByUid(uid));
}

TEST(PackageCatalogTest, UidsStayWithinTheSignedRange)
{
    PackageCatalog catalog;
    std::string error;
    ASSERT_TRUE(catalog.Install({"com.last", INT32_MAX, false, false, std::nullopt}, &error)) << error;
    EXPECT_FALSE(catalog.Install({"com.next", 0, false, false, std::nullopt}, &error));
    EXPECT_EQ(error, "the next uid, 2147483648, is beyond the 32-bit range");
    EXPECT_TRUE(catalog.Install({"com.given", 20020000, false, false, std::nullopt}, &error)) << error;
    EXPECT_FALSE(catalog.FindByBundle("com.next"));
}

TEST(DeviceServiceManagerTest, HiddenAbilitiesStayRegisteredAndComeBack)
{
    sptr<DeviceServiceManager> manager = new DeviceServiceManager();
    sptr<IRemoteObject> ability = new IPCObjectStub(u"test.Ability");
    ASSERT_EQ(manager->AddSystemAbility(4607, ability), 0);
    manager->SetObtainable(4607, false);
    manager->SetObtainable(501, false);  // hidden before it even exists
    EXPECT_EQ(manager->GetSystemAbility(4607), nullptr);
    EXPECT_EQ(manager->CheckSystemAbility(4607), nullptr);
    manager->SetObtainable(4607, true);
    EXPECT_EQ(manager->GetSystemAbility(4607), ability);
    manager->AddSystemAbility(501, ability);
    EXPECT_EQ(manager->GetSystemAbility(501), nullptr);
}

}  // namespace
}  // namespace Tarvo::Emu
