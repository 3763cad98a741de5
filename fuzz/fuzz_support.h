#ifndef ZEL_FUZZ_FUZZ_SUPPORT_H
#define ZEL_FUZZ_FUZZ_SUPPORT_H

// What the fuzz targets share. A failed check stops the run loudly, so the fuzzer keeps the input.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "iremote_object.h"
#include "message_parcel.h"

#define FUZZ_REQUIRE(condition)                                                                \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                      \
        }                                                                                      \
    } while (false)

namespace Tarvo::Fuzz {

// Four bytes, little-endian, as a request code.
uint32_t CodeOf(const uint8_t* bytes);

// A parcel of the interface token (when not null) and then the bytes. An object given goes into
// the object table only: the bytes decide whether anything refers to it.
MessageParcel RequestOf(const std::u16string* token, const uint8_t* bytes, size_t size,
                        const sptr<IRemoteObject>& object = nullptr);

}  // namespace Tarvo::Fuzz

#endif  // ZEL_FUZZ_FUZZ_SUPPORT_H
