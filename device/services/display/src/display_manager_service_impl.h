#ifndef ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_IMPL_H
#define ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_IMPL_H

#include <map>
#include <mutex>

#include "display_manager_service_stub.h"
#include "trace.h"

namespace Tarvo::Emu {

// The display manager service's object: the screens and the default display (behaviour in
// display_manager_service.h).
class DisplayManagerServiceImpl : public Vantel::DisplayManagerServiceStub {
public:
    DisplayManagerServiceImpl(Trace& trace, const Vantel::ScreenInfo& defaultScreen);

    Vantel::DisplayId GetDefaultDisplayId() override;
    std::optional<Vantel::ScreenInfo> GetScreenInfo(Vantel::ScreenId screenId) override;
    std::vector<Vantel::ScreenInfo> GetAllScreenInfos() override;
    Vantel::DMError SetResolution(Vantel::ScreenId screenId, uint32_t width, uint32_t height,
                                  uint32_t density) override;

private:
    Trace& trace_;
    const Vantel::DisplayId defaultDisplay_;
    std::mutex mutex_;
    std::map<Vantel::ScreenId, Vantel::ScreenInfo> screens_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_IMPL_H
