#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBE_INFO_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBE_INFO_H

// How a subscriber subscribes: the events it matches, and options. On this platform every thread
// mode delivers on a thread of the subscriber's process; priority and permission are kept but not
// enforced.

#include <cstdint>
#include <string>

#include "matching_skills.h"

namespace Tarvo::EventFwk {

class CommonEventSubscribeInfo {
public:
    enum ThreadMode { HANDLER = 0, POST = 1, ASYNC = 2, BACKGROUND = 3, COMMON = 4 };

    CommonEventSubscribeInfo() = default;
    explicit CommonEventSubscribeInfo(const MatchingSkills& matchingSkills);

    const MatchingSkills& GetMatchingSkills() const { return matchingSkills_; }
    void SetThreadMode(ThreadMode threadMode) { threadMode_ = threadMode; }
    ThreadMode GetThreadMode() const { return threadMode_; }
    void SetPriority(int32_t priority) { priority_ = priority; }
    int32_t GetPriority() const { return priority_; }
    void SetPermission(const std::string& permission) { permission_ = permission; }
    const std::string& GetPermission() const { return permission_; }

private:
    MatchingSkills matchingSkills_;
    ThreadMode threadMode_ = ASYNC;
    int32_t priority_ = 0;
    std::string permission_;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBE_INFO_H
