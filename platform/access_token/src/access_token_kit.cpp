#include "access_token_kit.h"

namespace Tarvo::Security::AccessToken {
namespace {
constexpr uint32_t kTypeShift = 28;
constexpr uint32_t kTypeMask = 0x3;
constexpr uint32_t kSerialMask = 0xFFFFF;
// The one two-bit value that is no type.
constexpr uint32_t kInvalidTypeBits = 0x3;
}  // namespace

ATokenTypeEnum AccessTokenKit::GetTokenTypeFlag(AccessTokenID tokenID)
{
    uint32_t type = (tokenID >> kTypeShift) & kTypeMask;
    if (type >= static_cast<uint32_t>(TOKEN_TYPE_BUTT)) {
        return TOKEN_INVALID;
    }
    return static_cast<ATokenTypeEnum>(type);
}

AccessTokenID AccessTokenKit::MakeTokenId(ATokenTypeEnum type, uint32_t serial)
{
    uint32_t typeBits = (type >= TOKEN_HAP && type < TOKEN_TYPE_BUTT) ? static_cast<uint32_t>(type) : kInvalidTypeBits;
    return (typeBits << kTypeShift) | (serial & kSerialMask);
}

}  // namespace Tarvo::Security::AccessToken
