#include <gtest/gtest.h>

#include "device_service_manager.h"
#include "ipc_object_stub.h"
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
