#include "parameter_service_impl.h"

namespace Tarvo::Emu {

ParameterServiceImpl::ParameterServiceImpl(std::shared_ptr<ParameterStore> store) : store_(std::move(store)) {}

int32_t ParameterServiceImpl::SetParameter(const std::string& key, const std::string& value)
{
    return store_->Set(key, value, true) ? 0 : PARAMETER_REFUSED;
}

std::optional<std::string> ParameterServiceImpl::GetParameter(const std::string& key)
{
    return store_->Get(key);
}

}  // namespace Tarvo::Emu
