#include "parameter_service.h"

#include <filesystem>

#include "i_parameter_service.h"
#include "parameter_service_impl.h"
#include "parameter_store.h"

namespace Tarvo::Emu {
namespace {
std::string ParametersFile(const std::string& dataDir)
{
    return dataDir.empty() ? std::string() : (std::filesystem::path(dataDir) / "parameters").string();
}
}  // namespace

ParameterService::ParameterService(DeviceContext& ctx)
    : ctx_(ctx), store_(std::make_shared<ParameterStore>(ParametersFile(ctx.DataDir()), ctx.GetTrace()))
{
}

ParameterService::~ParameterService() = default;

void ParameterService::Start()
{
    store_->Load();
    stub_ = ctx_.LaunchService<ParameterServiceImpl>("param_service", system::IParameterService::PARAMETER_SERVICE_ID,
                                                     process_, store_);
}

void ParameterService::Preset(const std::string& key, const std::string& value)
{
    store_->Set(key, value, false);
}

}  // namespace Tarvo::Emu
