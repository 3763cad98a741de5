#include <gtest/gtest.h>

#include "ipc_object_stub.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "platform_test_support.h"
#include "service_host.h"

namespace Tarvo {
namespace {
using Test::MakeProcess;

class SamgrTest : public testing::Test {
protected:
    sptr<ISystemAbilityManager> ClientIn(const std::shared_ptr<VirtualProcess>& process)
    {
        ScopedProcess scope(process);
        return SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    }

    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(SamgrTest, AbilitiesAddedInOneProcessAreObtainableFromAnother)
{
    auto serviceProcess = MakeProcess(20, "service");
    auto clientProcess = MakeProcess(30, "client");
    sptr<IRemoteObject> ability;
    {
        ScopedProcess scope(serviceProcess);
        ability = new IPCObjectStub(u"test.Ability");
        sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        ASSERT_NE(samgr, nullptr);
        EXPECT_EQ(samgr->AddSystemAbility(501, ability), 0);
        EXPECT_NE(samgr->AddSystemAbility(502, nullptr), 0);
        // Its own process gets the object itself back.
        EXPECT_EQ(samgr->GetSystemAbility(501), ability);
    }
    ScopedProcess scope(clientProcess);
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    ASSERT_NE(samgr, nullptr);
    sptr<IRemoteObject> seen = samgr->GetSystemAbility(501);
    ASSERT_NE(seen, nullptr);
    EXPECT_TRUE(seen->IsProxyObject());
    EXPECT_EQ(seen->GetObjectDescriptor(), u"test.Ability");
    EXPECT_EQ(samgr->GetSystemAbility(4607), nullptr);
    EXPECT_EQ(samgr->ListSystemAbilities(), std::vector<int32_t>{501});
    EXPECT_EQ(samgr->RemoveSystemAbility(501), 0);
    EXPECT_EQ(samgr->RemoveSystemAbility(501), SystemAbilityManager::ERR_INVALID_ABILITY);
    EXPECT_EQ(samgr->CheckSystemAbility(501), nullptr);
}

TEST_F(SamgrTest, NoServiceManagerWhenUnsetOrItsProcessDied)
{
    auto clientProcess = MakeProcess(31, "client");
    EXPECT_NE(ClientIn(clientProcess), nullptr);
    samgr_.Uninstall();
    EXPECT_EQ(ClientIn(clientProcess), nullptr);
    samgr_.Install();
    samgr_.Process()->Kill();
    EXPECT_EQ(ClientIn(clientProcess), nullptr);
}

TEST_F(SamgrTest, HostLoadsALibraryInItsProcessAndStartsRunOnCreateAbilities)
{
    auto hostProcess = MakeProcess(40, "service_host");
    ServiceHost host(hostProcess);
    std::string error;
    ASSERT_TRUE(host.LoadLibrary(TEST_ABILITY_LIBRARY, &error)) << error;
    ASSERT_EQ(host.Abilities().size(), 2u);
    EXPECT_EQ(host.FindAbility(4242)->GetClassName(), "TestAbility");
    host.StartAbilities();
    EXPECT_TRUE(host.FindAbility(4242)->IsRunning());
    EXPECT_FALSE(host.FindAbility(4243)->IsRunning());

    // Published at start, from the host's process.
    auto stub = dynamic_cast<IPCObjectStub*>(host.FindAbility(4242));
    ASSERT_NE(stub, nullptr);
    EXPECT_EQ(stub->GetOwner(), hostProcess);
    EXPECT_NE(ClientIn(MakeProcess(41, "client"))->GetSystemAbility(4242), nullptr);
    EXPECT_EQ(ClientIn(MakeProcess(42, "client"))->GetSystemAbility(4243), nullptr);

    host.StopAbilities();
    EXPECT_FALSE(host.FindAbility(4242)->IsRunning());
    EXPECT_FALSE(host.LoadLibrary("/nonexistent/libnothing.so", &error));
    EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace Tarvo
