#ifndef TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_PROXY_H
#define TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_PROXY_H

#include "i_display_manager_service.h"
#include "iremote_proxy.h"

namespace Tarvo::Vantel {

// Client side of IDisplayManagerService. A request that cannot be sent, or whose reply cannot be
// read, gives DISPLAY_ID_INVALID, nullopt, an empty list or DM_ERROR_IPC_FAILED.
class DisplayManagerServiceProxy : public IRemoteProxy<IDisplayManagerService> {
public:
    explicit DisplayManagerServiceProxy(const sptr<IRemoteObject>& impl);

    DisplayId GetDefaultDisplayId() override;
    std::optional<ScreenInfo> GetScreenInfo(ScreenId screenId) override;
    std::vector<ScreenInfo> GetAllScreenInfos() override;
    DMError SetResolution(ScreenId screenId, uint32_t width, uint32_t height, uint32_t density) override;

private:
    // Sends a request whose data is complete; false on any transport or service failure.
    bool Call(uint32_t code, MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_SERVICE_PROXY_H
