#include "system_ability.h"

#include <mutex>
#include <vector>

#include "iservice_registry.h"
#include "refbase.h"
#include "service_host.h"

namespace Tarvo {
namespace {

struct Registry {
    std::mutex mutex;
    std::vector<SystemAbility*> all;      // kept for the life of the process
    std::vector<SystemAbility*> pending;  // not yet collected by a host
};

Registry& GetRegistry()
{
    // Never destroyed: abilities live for the whole process.
    static auto* registry = new Registry();
    return *registry;
}

}  // namespace

bool SystemAbility::MakeAndRegisterAbility(SystemAbility* systemAbility)
{
    if (systemAbility == nullptr) {
        return false;
    }
    // A remote-object ability must survive its first sptr going away (a failed Publish, say).
    if (auto* counted = dynamic_cast<RefBase*>(systemAbility)) {
        counted->IncStrongRef(systemAbility);
    }
    std::lock_guard<std::mutex> lock(GetRegistry().mutex);
    GetRegistry().all.push_back(systemAbility);
    GetRegistry().pending.push_back(systemAbility);
    return true;
}

std::vector<SystemAbility*> TakeRegisteredAbilities()
{
    std::lock_guard<std::mutex> lock(GetRegistry().mutex);
    std::vector<SystemAbility*> taken;
    taken.swap(GetRegistry().pending);
    return taken;
}

SystemAbility::SystemAbility(int32_t systemAbilityId, bool runOnCreate)
    : systemAbilityId_(systemAbilityId), runOnCreate_(runOnCreate)
{
}

void SystemAbility::Start()
{
    if (running_) {
        return;
    }
    running_ = true;
    OnStart();
}

void SystemAbility::Stop()
{
    if (!running_) {
        return;
    }
    running_ = false;
    OnStop();
}

bool SystemAbility::Publish(sptr<IRemoteObject> systemAbility)
{
    if (systemAbility == nullptr) {
        return false;
    }
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return false;
    }
    return samgr->AddSystemAbility(systemAbilityId_, systemAbility) == 0;
}

}  // namespace Tarvo
