#ifndef ZEL_BENCH_BENCH_REQUESTS_H
#define ZEL_BENCH_BENCH_REQUESTS_H

// The request the transport benchmarks send: 64 bytes, as the floors carry.

#include <cstdint>

#include "floor_sockets.h"
#include "iremote_object.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Bench {

// Synchronous (the reply must hold the same number of bytes) or one-way.
inline bool SendPayload(const sptr<IRemoteObject>& object, uint32_t code, bool oneWay)
{
    static const FloorMessage payload{};
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(oneWay ? MessageOption::TF_ASYNC : MessageOption::TF_SYNC);
    data.WriteBuffer(payload.data(), payload.size());
    return object->SendRequest(code, data, reply, option) == 0 && (oneWay || reply.GetDataSize() == payload.size());
}

}  // namespace Tarvo::Bench

#endif  // ZEL_BENCH_BENCH_REQUESTS_H
