#ifndef TARVO_IPC_IPC_TYPES_H
#define TARVO_IPC_IPC_TYPES_H

// Return codes of SendRequest/OnRemoteRequest and the request codes every object understands.

#include <cstdint>

namespace Tarvo {

enum {
    ERR_NONE = 0,
    IPC_STUB_UNKNOW_TRANS_ERR = 16,
    ERR_INVALID_VALUE = 22,
    ERR_DEAD_OBJECT = 32,
    ERR_TIMED_OUT = 110,
    ERR_TRANSACTION_FAILED = 29189,
};

constexpr uint32_t IpcFourCharCode(char a, char b, char c, char d)
{
    return (static_cast<uint32_t>(a) << 24) | (static_cast<uint32_t>(b) << 16) | (static_cast<uint32_t>(c) << 8) |
           static_cast<uint32_t>(d);
}

// Answered with 0 by every stub.
constexpr uint32_t PING_TRANSACTION = IpcFourCharCode('_', 'P', 'N', 'G');
// Answered with the stub's descriptor (a string16) in the reply.
constexpr uint32_t INTERFACE_TRANSACTION = IpcFourCharCode('_', 'N', 'T', 'F');
// Answered with the object's Dump() text in the reply (see IPCObjectStub::OnRemoteRequest).
constexpr uint32_t DUMP_TRANSACTION = IpcFourCharCode('_', 'D', 'M', 'P');

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_TYPES_H
