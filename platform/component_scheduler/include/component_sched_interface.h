#ifndef TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_INTERFACE_H
#define TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_INTERFACE_H

// The component scheduler, system ability COMPONENT_SCHED_SA_ID: the scheduling type of a package.
//
// Wire format, GET_APP_TYPE (synchronous):
//   data  = interface token COMPONENT_SCHED_DESCRIPTOR (string16), string bundleName
//   reply = int32 result (COMPONENT_SCHED_OK when a type is known), then int32 type only then
// A wrong token or undecodable data is refused: a non-zero status and no reply.

#include <cstdint>

namespace Tarvo::ComponentScheduler {

constexpr int32_t COMPONENT_SCHED_SA_ID = 1920;
constexpr const char16_t* COMPONENT_SCHED_DESCRIPTOR = u"tarvo.componentscheduler.ComponentSched";

enum ComponentSchedInterfaceCode : uint32_t {
    GET_APP_TYPE = 1,
};

// Results of the service and of ComponentSchedClient.
enum ComponentSchedResult : int32_t {
    COMPONENT_SCHED_OK = 0,
    COMPONENT_SCHED_ERR_NOT_FOUND = 1,    // unknown package, or no type set for it
    COMPONENT_SCHED_ERR_UNAVAILABLE = 2,  // the service is not obtainable or the request did not arrive
    COMPONENT_SCHED_ERR_BAD_REPLY = 3,
};

}  // namespace Tarvo::ComponentScheduler

#endif  // TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_INTERFACE_H
