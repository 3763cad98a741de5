#ifndef TARVO_COMMON_EVENT_MATCHING_SKILLS_H
#define TARVO_COMMON_EVENT_MATCHING_SKILLS_H

// The events a subscriber wants: a list of actions, in the order added, without repeats.

#include <cstddef>
#include <string>
#include <vector>

#include "want.h"

namespace Tarvo::EventFwk {

class MatchingSkills {
public:
    // Adding an event already present changes nothing.
    void AddEvent(const std::string& event);
    void RemoveEvent(const std::string& event);
    bool HasEvent(const std::string& event) const;
    // Empty for an index past the end.
    std::string GetEvent(size_t index) const;
    const std::vector<std::string>& GetEvents() const { return events_; }
    size_t CountEvent() const { return events_.size(); }

    bool MatchEvent(const std::string& event) const { return HasEvent(event); }
    // Whether the want's action is one of the events.
    bool Match(const AAFwk::Want& want) const { return HasEvent(want.GetAction()); }

private:
    std::vector<std::string> events_;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_MATCHING_SKILLS_H
