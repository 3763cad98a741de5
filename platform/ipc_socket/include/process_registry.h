#ifndef TARVO_IPC_SOCKET_PROCESS_REGISTRY_H
#define TARVO_IPC_SOCKET_PROCESS_REGISTRY_H

// The device's registry of real processes: the emulated identity (pid, uid, token ids, name) each
// real process may act as. The device registers a process before it starts it; the socket transport
// looks up the real pid the kernel reports for a peer (SO_PEERCRED), so nothing a peer says about
// itself is believed. A real process hosting several emulated processes (tests, the in-process
// device) registers one identity per emulated process and picks among them; it can never pick
// another real process's identity.
//
// Kept as one small file per real pid in a folder of the run folder that only the device writes.
// Entries are untrusted input when read: their size and fields are checked.

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "process_session.h"

namespace Tarvo {

class ProcessRegistry {
public:
    // Identities a real pid may have at most.
    static constexpr size_t kMaxIdentities = 64;

    explicit ProcessRegistry(std::string dir);

    // Replaces what `realPid` may act as (written whole, then renamed into place). False, with the
    // reason, if the folder cannot be written or the list is empty or too long.
    bool Register(pid_t realPid, const std::vector<ProcessIdentity>& identities, std::string* error);
    void Unregister(pid_t realPid);
    // What `realPid` may act as; empty when it is not registered (or its entry is malformed).
    std::vector<ProcessIdentity> IdentitiesOf(pid_t realPid) const;
    // The identity with emulated pid `pid` among those of `realPid`.
    std::optional<ProcessIdentity> Lookup(pid_t realPid, int32_t pid) const;

    const std::string& Dir() const { return dir_; }

private:
    std::string dir_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_SOCKET_PROCESS_REGISTRY_H
