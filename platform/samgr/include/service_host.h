#ifndef TARVO_SAMGR_SERVICE_HOST_H
#define TARVO_SAMGR_SERVICE_HOST_H

#include <memory>
#include <string>
#include <vector>

#include "system_ability.h"
#include "virtual_process.h"

namespace Tarvo {

// The process that hosts service libraries. LoadLibrary dlopens a library inside the host's
// virtual process, so that everything its static initialisers create (the abilities, their
// stubs, their runner threads) belongs to that process, and collects the abilities it registered.
class ServiceHost {
public:
    explicit ServiceHost(std::shared_ptr<VirtualProcess> process);
    ~ServiceHost();
    ServiceHost(const ServiceHost&) = delete;
    ServiceHost& operator=(const ServiceHost&) = delete;

    // False with a readable reason when the library cannot be loaded or registers no ability.
    bool LoadLibrary(const std::string& path, std::string* error);
    // OnStart of every run-on-create ability not yet running, in registration order.
    void StartAbilities();
    // OnStop of every running ability, in reverse order.
    void StopAbilities();

    SystemAbility* FindAbility(int32_t systemAbilityId) const;
    const std::vector<SystemAbility*>& Abilities() const { return abilities_; }
    const std::shared_ptr<VirtualProcess>& Process() const { return process_; }

private:
    std::shared_ptr<VirtualProcess> process_;
    std::vector<void*> libraries_;
    std::vector<SystemAbility*> abilities_;
};

// Abilities registered by static initialisers and not yet collected by a host.
std::vector<SystemAbility*> TakeRegisteredAbilities();

}  // namespace Tarvo

#endif  // TARVO_SAMGR_SERVICE_HOST_H
