#include "common_event_subscribe_info.h"

namespace Tarvo::EventFwk {

CommonEventSubscribeInfo::CommonEventSubscribeInfo(const MatchingSkills& matchingSkills)
    : matchingSkills_(matchingSkills)
{
}

}  // namespace Tarvo::EventFwk
