#ifndef TARVO_RENDER_SERVICE_RS_INTERFACES_H
#define TARVO_RENDER_SERVICE_RS_INTERFACES_H

#include <cstdint>
#include <string>
#include <vector>

#include "event_info.h"

namespace Tarvo::Vantel {

// The render-service client of a process. Each call is a synchronous request to the render service,
// found once and kept until it dies or the service manager no longer offers it (then found again);
// the receiver sees one thread's calls in the order they were made. When the service cannot be
// reached the call is dropped silently. Thread-safe.
class RSInterfaces {
public:
    static RSInterfaces& GetInstance();

    RSInterfaces(const RSInterfaces&) = delete;
    RSInterfaces& operator=(const RSInterfaces&) = delete;

    // listSize travels as given, even when it differs from the list's length.
    void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList);
    void NotifyRefreshRateEvent(const EventInfo& eventInfo);
    void NotifyLightFactorStatus(bool isSafe);

private:
    RSInterfaces() = default;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_RENDER_SERVICE_RS_INTERFACES_H
