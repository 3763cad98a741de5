#include "service_host.h"

#include <dlfcn.h>

#include <algorithm>

namespace Tarvo {

ServiceHost::ServiceHost(std::shared_ptr<VirtualProcess> process) : process_(std::move(process)) {}

// Libraries stay loaded: their abilities and static objects live until the process ends.
ServiceHost::~ServiceHost() = default;

bool ServiceHost::LoadLibrary(const std::string& path, std::string* error)
{
    ScopedProcess scope(process_);
    TakeRegisteredAbilities();  // anything registered before belongs to no library of ours
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        if (error != nullptr) {
            const char* reason = dlerror();
            *error = reason != nullptr ? reason : "dlopen failed";
        }
        return false;
    }
    libraries_.push_back(handle);
    std::vector<SystemAbility*> added = TakeRegisteredAbilities();
    if (added.empty()) {
        if (error != nullptr) {
            *error = path + " registered no system ability";
        }
        return false;
    }
    abilities_.insert(abilities_.end(), added.begin(), added.end());
    return true;
}

void ServiceHost::StartAbilities()
{
    ScopedProcess scope(process_);
    for (SystemAbility* ability : abilities_) {
        if (ability->IsRunOnCreate()) {
            ability->Start();
        }
    }
}

void ServiceHost::StopAbilities()
{
    ScopedProcess scope(process_);
    for (auto it = abilities_.rbegin(); it != abilities_.rend(); ++it) {
        (*it)->Stop();
    }
}

SystemAbility* ServiceHost::FindAbility(int32_t systemAbilityId) const
{
    auto it = std::find_if(abilities_.begin(), abilities_.end(),
                           [systemAbilityId](SystemAbility* a) { return a->GetSystemAbilityId() == systemAbilityId; });
    return it != abilities_.end() ? *it : nullptr;
}

}  // namespace Tarvo
