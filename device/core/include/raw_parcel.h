#ifndef ZEL_DEVICE_RAW_PARCEL_H
#define ZEL_DEVICE_RAW_PARCEL_H

// The parcel of a raw request: the interface token (unless left out), then each field in order.

#include <string>

#include "device_control.h"
#include "message_parcel.h"

namespace Tarvo::Emu {

// False as soon as something does not fit (the parcel then holds what came before it).
bool WriteRawRequest(const RawRequest& request, const std::u16string& defaultToken, MessageParcel& data);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_RAW_PARCEL_H
