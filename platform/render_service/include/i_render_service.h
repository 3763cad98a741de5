#ifndef TARVO_RENDER_SERVICE_I_RENDER_SERVICE_H
#define TARVO_RENDER_SERVICE_I_RENDER_SERVICE_H

#include <cstdint>
#include <string>
#include <vector>

#include "event_info.h"
#include "iremote_broker.h"

namespace Tarvo::Vantel {

// The render service's notice interface (system ability RENDER_SERVICE_ID): how clients reach the
// frame-rate arbiter. Every request is synchronous, so the service sees one caller's notices in the
// order they were made.
//
// Wire format (data after the interface token; replies carry no fields):
//   NOTIFY_PACKAGE_EVENT        uint32 listSize (as given, not checked), string vector packageList
//   NOTIFY_REFRESH_RATE_EVENT   string eventName, bool eventStatus, uint32 minRefreshRate,
//                               uint32 maxRefreshRate, string description
//   NOTIFY_LIGHT_FACTOR_STATUS  bool isSafe
// A request with a wrong token or missing fields is refused with ERR_INVALID_VALUE, unapplied.
class IRenderService : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.rosen.RenderService");

    static constexpr int32_t RENDER_SERVICE_ID = 10;

    enum Code : uint32_t {
        NOTIFY_PACKAGE_EVENT = 1,
        NOTIFY_REFRESH_RATE_EVENT = 2,
        NOTIFY_LIGHT_FACTOR_STATUS = 3,
    };

    virtual void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList) = 0;
    virtual void NotifyRefreshRateEvent(const EventInfo& eventInfo) = 0;
    virtual void NotifyLightFactorStatus(bool isSafe) = 0;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_RENDER_SERVICE_I_RENDER_SERVICE_H
