#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_SUPPORT_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_SUPPORT_H

// Actions of the system's own common events.

#include <string>

namespace Tarvo::EventFwk {

class CommonEventSupport {
public:
    // The element's bundle name is the package.
    static inline const std::string COMMON_EVENT_PACKAGE_ADDED = "usual.event.PACKAGE_ADDED";
    static inline const std::string COMMON_EVENT_PACKAGE_REMOVED = "usual.event.PACKAGE_REMOVED";
    // The code is the new power mode.
    static inline const std::string COMMON_EVENT_POWER_SAVE_MODE_CHANGED = "usual.event.POWER_SAVE_MODE_CHANGED";
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_SUPPORT_H
