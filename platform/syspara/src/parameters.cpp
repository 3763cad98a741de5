#include "parameters.h"

#include "i_parameter_service.h"
#include "iservice_registry.h"

namespace Tarvo::system {
namespace {
// Null while the service manager or the parameter service cannot be reached.
sptr<IParameterService> ParameterService()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return nullptr;
    }
    sptr<IRemoteObject> object = samgr->GetSystemAbility(IParameterService::PARAMETER_SERVICE_ID);
    return object != nullptr ? iface_cast<IParameterService>(object) : nullptr;
}
}  // namespace

bool SetParameter(const std::string& key, const std::string& value)
{
    sptr<IParameterService> service = ParameterService();
    return service != nullptr && service->SetParameter(key, value) == 0;
}

std::string GetParameter(const std::string& key, const std::string& def)
{
    sptr<IParameterService> service = ParameterService();
    if (service == nullptr) {
        return def;
    }
    return service->GetParameter(key).value_or(def);
}

}  // namespace Tarvo::system
