#ifndef ZEL_DEVICE_COMMON_EVENT_SERVICE_H
#define ZEL_DEVICE_COMMON_EVENT_SERVICE_H

// The common-event service of the emulated device (system ability 3299), in its own process.
//
// Contract:
//  - Start() publishes the service; CommonEventManager clients then subscribe, unsubscribe and
//    publish through it, and each event goes, one-way, to every subscriber whose events include
//    its action, on a thread of the subscriber's process.
//  - Publish() is the device publishing an event itself (scenario commands event, powermode,
//    pkg.install, pkg.remove): the bundle goes in the want's element, the code defaults to 0.
//    False before Start or for an empty action. Nothing is traced: what the service does with an
//    event shows in what it sends on.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "device_context.h"
#include "i_common_event_service.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class CommonEventHub;

class CommonEventService {
public:
    static constexpr int32_t SA_ID = EventFwk::COMMON_EVENT_SERVICE_ID;

    explicit CommonEventService(DeviceContext& ctx);
    ~CommonEventService();
    CommonEventService(const CommonEventService&) = delete;
    CommonEventService& operator=(const CommonEventService&) = delete;

    void Start();
    bool Publish(const std::string& action, const std::optional<std::string>& bundle, std::optional<int32_t> code);

    size_t SubscriptionCount() const;
    // The service's process; null before Start.
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<CommonEventHub> hub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMON_EVENT_SERVICE_H
