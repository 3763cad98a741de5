#include <gtest/gtest.h>

#include <mutex>

#include "ipc_object_stub.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "platform_test_support.h"
#include "service_host.h"
#include "system_ability_status_change.h"
#include "work_tracker.h"

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

// Notes what the service manager tells it, as "add ID" and "remove ID".
class StatusListener : public SystemAbilityStatusChangeStub {
public:
    void OnAddSystemAbility(int32_t id) override { Note("add " + std::to_string(id)); }
    void OnRemoveSystemAbility(int32_t id) override { Note("remove " + std::to_string(id)); }
    std::vector<std::string> Heard()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return heard_;
    }

private:
    void Note(std::string what)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        heard_.push_back(std::move(what));
    }
    std::mutex mutex_;
    std::vector<std::string> heard_;
};

TEST_F(SamgrTest, SubscribersOfAnotherProcessHearOfTheirAbilityChangingAfterTheySubscribed)
{
    auto clientProcess = MakeProcess(32, "client");
    sptr<IRemoteObject> first = samgr_.AddAbility<IPCObjectStub>(501, samgr_.Process(), u"test.Ability");
    sptr<StatusListener> listener;
    {
        ScopedProcess scope(clientProcess);
        listener = new StatusListener();
        sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        EXPECT_EQ(samgr->SubscribeSystemAbility(501, listener), 0);
        EXPECT_EQ(samgr->SubscribeSystemAbility(0, listener), SystemAbilityManager::ERR_INVALID_ABILITY);
    }
    samgr_->AddSystemAbility(502, first);
    samgr_->AddSystemAbility(501, first);
    samgr_->RemoveSystemAbility(501);
    samgr_->RemoveSystemAbility(502);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10)));
    EXPECT_EQ(listener->Heard(), (std::vector<std::string>{"add 501", "remove 501"}));
}

TEST_F(SamgrTest, ListenersAreBoundedAndADeadOneIsForgotten)
{
    auto clientProcess = MakeProcess(33, "client");
    std::vector<sptr<StatusListener>> listeners;
    {
        ScopedProcess scope(clientProcess);
        sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        for (size_t i = 0; i < SystemAbilityManager::MAX_LISTENERS; ++i) {
            listeners.push_back(new StatusListener());
            ASSERT_EQ(samgr->SubscribeSystemAbility(501, listeners.back()), 0);
        }
    }
    auto late = MakeProcess(34, "late");
    ScopedProcess scope(late);
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    sptr<StatusListener> another = new StatusListener();
    EXPECT_EQ(samgr->SubscribeSystemAbility(501, another), SystemAbilityManager::ERR_TOO_MANY_LISTENERS);
    clientProcess->Kill();
    EXPECT_EQ(samgr->SubscribeSystemAbility(501, another), 0);
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
