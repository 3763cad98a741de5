#ifndef TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_CLIENT_H
#define TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_CLIENT_H

// Asks the component scheduler, synchronously, for a package's type. The scheduler is found once
// and kept while it lives and stays obtainable.

#include <cstdint>
#include <string>

namespace Tarvo::ComponentScheduler {

class ComponentSchedClient {
public:
    static ComponentSchedClient& GetInstance();

    // COMPONENT_SCHED_OK with `type` set when the scheduler knows a type for the package;
    // otherwise a non-zero ComponentSchedResult and `type` untouched.
    int32_t GetApptype(const std::string& bundleName, int& type);

private:
    ComponentSchedClient() = default;
};

}  // namespace Tarvo::ComponentScheduler

#endif  // TARVO_COMPONENT_SCHEDULER_COMPONENT_SCHED_CLIENT_H
