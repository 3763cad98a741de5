#ifndef ZEL_DEVICE_DEVICE_SERVICES_H
#define ZEL_DEVICE_DEVICE_SERVICES_H

#include <memory>

#include "app_category_service.h"
#include "app_manager_service.h"
#include "bundle_manager_service.h"
#include "common_event_service.h"
#include "component_scheduler_service.h"
#include "device_context.h"
#include "display_manager_service.h"
#include "display_power_manager_service.h"
#include "parameter_service.h"
#include "render_service.h"
#include "settings_provider.h"

namespace Tarvo::Emu {

// The system services of the device, each in its own process once started.
struct DeviceServices {
    explicit DeviceServices(DeviceContext& context);
    // Starts every service and makes it obtainable from the service manager; false with a reason
    // when one could not start (the others still run).
    bool Start(std::string* error);

    std::unique_ptr<AppManagerService> appManager;
    std::unique_ptr<BundleManagerService> bundleManager;
    std::unique_ptr<AppCategoryService> category;
    std::unique_ptr<ComponentSchedulerService> scheduler;
    std::unique_ptr<RenderService> render;
    std::unique_ptr<DisplayManagerService> display;
    std::unique_ptr<DisplayPowerManagerService> power;
    std::unique_ptr<ParameterService> params;
    std::unique_ptr<CommonEventService> commonEvents;
    std::unique_ptr<SettingsProvider> settings;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_SERVICES_H
