#ifndef TARVO_DISPLAY_MANAGER_I_DISPLAY_MANAGER_SERVICE_H
#define TARVO_DISPLAY_MANAGER_I_DISPLAY_MANAGER_SERVICE_H

#include <optional>
#include <vector>

#include "dm_common.h"
#include "iremote_broker.h"
#include "screen_info.h"

namespace Tarvo::Vantel {

// The display manager service (system ability DISPLAY_MANAGER_SERVICE_SA_ID): displays and the
// screens behind them. All requests are synchronous.
//
// Wire format (data after the interface token):
//   GET_DEFAULT_DISPLAY_ID   data -;                                   reply uint64 display id
//   GET_SCREEN_INFO          data uint64 screen id;                    reply int32 found (0/1), ScreenInfo if found
//   GET_ALL_SCREEN_INFOS     data -;                                   reply int32 count, that many ScreenInfo
//   SET_RESOLUTION           data uint64 screen id, uint32 width,
//                            uint32 height, uint32 density;            reply int32 DMError
// A request with a wrong token or missing fields is refused with ERR_INVALID_VALUE, unapplied.
class IDisplayManagerService : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.rosen.DisplayManager");

    static constexpr int32_t DISPLAY_MANAGER_SERVICE_SA_ID = 4607;

    enum Code : uint32_t {
        GET_DEFAULT_DISPLAY_ID = 1,
        GET_SCREEN_INFO = 2,
        GET_ALL_SCREEN_INFOS = 3,
        SET_RESOLUTION = 4,
    };

    // DISPLAY_ID_INVALID when there is none.
    virtual DisplayId GetDefaultDisplayId() = 0;
    virtual std::optional<ScreenInfo> GetScreenInfo(ScreenId screenId) = 0;
    // In id order.
    virtual std::vector<ScreenInfo> GetAllScreenInfos() = 0;
    virtual DMError SetResolution(ScreenId screenId, uint32_t width, uint32_t height, uint32_t density) = 0;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_I_DISPLAY_MANAGER_SERVICE_H
