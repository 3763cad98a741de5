#ifndef ZEL_DEVICE_DECIMAL_H
#define ZEL_DEVICE_DECIMAL_H

// Guarded decimal conversion of scenario text: never throws, never accepts partial input.

#include <cstdint>
#include <string_view>

namespace Tarvo::Emu {

// An optional '-' and one or more digits, nothing else, within the 64-bit range.
bool ParseDecimal(std::string_view text, int64_t* value);

// Keeps the low 32 bits (two's complement), so that any 64-bit value can be sent on a 32-bit field.
inline uint32_t LowBits(int64_t value)
{
    return static_cast<uint32_t>(static_cast<uint64_t>(value));
}

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DECIMAL_H
