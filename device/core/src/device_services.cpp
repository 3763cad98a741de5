#include "device_services.h"

namespace Tarvo::Emu {

DeviceServices::DeviceServices(DeviceContext& context)
    : appManager(std::make_unique<AppManagerService>(context)),
      bundleManager(std::make_unique<BundleManagerService>(context)),
      category(std::make_unique<AppCategoryService>(context)),
      scheduler(std::make_unique<ComponentSchedulerService>(context)),
      render(std::make_unique<RenderService>(context)),
      display(std::make_unique<DisplayManagerService>(context)),
      power(std::make_unique<DisplayPowerManagerService>(context)),
      params(std::make_unique<ParameterService>(context)),
      commonEvents(std::make_unique<CommonEventService>(context)),
      settings(std::make_unique<SettingsProvider>(context))
{
}

bool DeviceServices::Start(std::string* error)
{
    appManager->Start();
    bundleManager->Start();
    category->Start();
    scheduler->Start();
    render->Start();
    display->Start();
    power->Start();
    params->Start();
    commonEvents->Start();
    return settings->Start(error);
}

}  // namespace Tarvo::Emu
