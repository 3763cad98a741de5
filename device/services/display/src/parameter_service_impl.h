#ifndef ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_IMPL_H
#define ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_IMPL_H

#include <memory>

#include "parameter_service_stub.h"
#include "parameter_store.h"

namespace Tarvo::Emu {

// The parameter service's object: requests go to the store, sets traced.
class ParameterServiceImpl : public system::ParameterServiceStub {
public:
    explicit ParameterServiceImpl(std::shared_ptr<ParameterStore> store);

    int32_t SetParameter(const std::string& key, const std::string& value) override;
    std::optional<std::string> GetParameter(const std::string& key) override;

private:
    const std::shared_ptr<ParameterStore> store_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_IMPL_H
