#include "parameters.h"

#include "i_parameter_service.h"
#include "system_ability_cache.h"

namespace Tarvo::system {
namespace {
// Null while the service manager or the parameter service cannot be reached.
sptr<IParameterService> ParameterService()
{
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* client = new SystemAbilityClient<IParameterService>(IParameterService::PARAMETER_SERVICE_ID);
    return client->Get();
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
