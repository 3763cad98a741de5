#ifndef TARVO_IPC_IPC_SKELETON_H
#define TARVO_IPC_IPC_SKELETON_H

// Who is calling. While a request from another process is being handled, the calling identity is
// that process's; anywhere else (no request, or a direct call within one process) it is the
// calling thread's own process.

#include <sys/types.h>

#include <cstdint>

#include "iremote_object.h"
#include "refbase.h"

namespace Tarvo {

class IPCSkeleton {
public:
    static pid_t GetCallingPid();
    static pid_t GetCallingUid();
    static uint32_t GetCallingTokenID();
    static uint64_t GetCallingFullTokenID();
    static uint32_t GetSelfTokenID();
    // True unless the thread is handling a request from another process.
    static bool IsLocalCalling();

    // The service manager's object as seen from the calling thread's process (the object itself
    // in its owner, a proxy elsewhere); null if unset or its owner is dead.
    static sptr<IRemoteObject> GetContextObject();
    // Null unsets it. False if the object cannot be carried between processes.
    static bool SetContextObject(const sptr<IRemoteObject>& object);
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_SKELETON_H
