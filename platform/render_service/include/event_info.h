#ifndef TARVO_RENDER_SERVICE_EVENT_INFO_H
#define TARVO_RENDER_SERVICE_EVENT_INFO_H

#include <cstdint>
#include <string>

namespace Tarvo::Vantel {

// A refresh-rate vote for the frame-rate arbiter: a voter name, whether the vote starts (true) or
// ends, the range it asks for and a free description. Unset fields are zero or empty.
struct EventInfo {
    std::string eventName;
    bool eventStatus = false;
    uint32_t minRefreshRate = 0;
    uint32_t maxRefreshRate = 0;
    std::string description;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_RENDER_SERVICE_EVENT_INFO_H
