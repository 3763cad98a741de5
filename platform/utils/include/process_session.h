#ifndef TARVO_UTILS_PROCESS_SESSION_H
#define TARVO_UTILS_PROCESS_SESSION_H

// A process as the IPC layer knows it: who it is (what IPCSkeleton reports to the processes it
// calls) and whether it still lives. Objects belong to a session; a dead session's objects are dead.

#include <cstdint>
#include <string>

namespace Tarvo {

struct ProcessIdentity {
    int32_t pid = 0;
    int32_t uid = 0;
    uint32_t tokenId = 0;
    uint64_t fullTokenId = 0;
    std::string name;
};

class ProcessSession {
public:
    virtual ~ProcessSession() = default;
    virtual const ProcessIdentity& Identity() const = 0;
    virtual bool IsAlive() const = 0;
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_PROCESS_SESSION_H
