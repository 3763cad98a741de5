#ifndef TARVO_IPC_CALLING_CONTEXT_H
#define TARVO_IPC_CALLING_CONTEXT_H

// Per-thread state of the request being handled: who sent it (null when the thread handles no
// request from another process) and the tag that requests sent from here carry.

#include <cstdint>

#include "process_session.h"

namespace Tarvo {

class CallingContext {
public:
    static const ProcessIdentity* RemoteCaller();
    static uint64_t Tag();
    static void SetTag(uint64_t tag);

    // Sets both for its lifetime; nests.
    class Scope {
    public:
        Scope(const ProcessIdentity* remoteCaller, uint64_t tag);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const ProcessIdentity* previousCaller_;
        uint64_t previousTag_;
    };
};

}  // namespace Tarvo

#endif  // TARVO_IPC_CALLING_CONTEXT_H
