#ifndef TARVO_SAMGR_SYSTEM_ABILITY_H
#define TARVO_SAMGR_SYSTEM_ABILITY_H

#include <cstdint>
#include <string>
#include <vector>

#include "iremote_object.h"

namespace Tarvo {

// Base of a system ability that a service library provides. The library registers it from a
// static initialiser (MakeAndRegisterAbility); the service host that loaded the library then
// starts it (OnStart) if it is run-on-create, and stops it (OnStop) at shutdown.
class SystemAbility {
public:
    // Hands the ability to this process's ability registry, which keeps it (and, for a
    // reference-counted ability, a strong reference to it) for the life of the process.
    static bool MakeAndRegisterAbility(SystemAbility* systemAbility);

    virtual ~SystemAbility() = default;
    virtual std::string GetClassName() = 0;

    int32_t GetSystemAbilityId() const { return systemAbilityId_; }
    bool IsRunOnCreate() const { return runOnCreate_; }
    bool IsRunning() const { return running_; }

    // Called by the service host.
    void Start();
    void Stop();

    // Writes the ability's live state to fd; an ability that is also the published object answers
    // dump requests with it. Nothing to tell by default.
    virtual int32_t Dump(int32_t fd, const std::vector<std::u16string>& args)
    {
        (void)fd;
        (void)args;
        return 0;
    }

protected:
    SystemAbility(int32_t systemAbilityId, bool runOnCreate = false);
    virtual void OnStart() {}
    virtual void OnStop() {}
    // Adds the object to the service manager under this ability's id.
    bool Publish(sptr<IRemoteObject> systemAbility);

private:
    const int32_t systemAbilityId_;
    const bool runOnCreate_;
    bool running_ = false;
};

}  // namespace Tarvo

#define DECLARE_SYSTEM_ABILITY(className) \
public:                                   \
    std::string GetClassName() override   \
    {                                     \
        return #className;                \
    }

#define REGISTER_SYSTEM_ABILITY_BY_ID(abilityClassName, systemAbilityId, runOnCreate) \
    const bool abilityClassName##_##RegisterResult =                                  \
        ::Tarvo::SystemAbility::MakeAndRegisterAbility(new abilityClassName(systemAbilityId, runOnCreate));

#endif  // TARVO_SAMGR_SYSTEM_ABILITY_H
