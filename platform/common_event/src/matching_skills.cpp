#include "matching_skills.h"

#include <algorithm>

namespace Tarvo::EventFwk {

void MatchingSkills::AddEvent(const std::string& event)
{
    if (!HasEvent(event)) {
        events_.push_back(event);
    }
}

void MatchingSkills::RemoveEvent(const std::string& event)
{
    events_.erase(std::remove(events_.begin(), events_.end(), event), events_.end());
}

bool MatchingSkills::HasEvent(const std::string& event) const
{
    return std::find(events_.begin(), events_.end(), event) != events_.end();
}

std::string MatchingSkills::GetEvent(size_t index) const
{
    return index < events_.size() ? events_[index] : std::string();
}

}  // namespace Tarvo::EventFwk
