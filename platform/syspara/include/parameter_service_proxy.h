#ifndef TARVO_SYSPARA_PARAMETER_SERVICE_PROXY_H
#define TARVO_SYSPARA_PARAMETER_SERVICE_PROXY_H

#include "i_parameter_service.h"
#include "iremote_proxy.h"

namespace Tarvo::system {

// Client side of IParameterService. A request that cannot be sent, or whose reply cannot be read,
// gives the transport's code (ERR_INVALID_VALUE when it has none) or nullopt.
class ParameterServiceProxy : public IRemoteProxy<IParameterService> {
public:
    explicit ParameterServiceProxy(const sptr<IRemoteObject>& impl);

    int32_t SetParameter(const std::string& key, const std::string& value) override;
    std::optional<std::string> GetParameter(const std::string& key) override;

private:
    int Call(uint32_t code, MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::system

#endif  // TARVO_SYSPARA_PARAMETER_SERVICE_PROXY_H
