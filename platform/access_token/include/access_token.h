#ifndef TARVO_ACCESS_TOKEN_ACCESS_TOKEN_H
#define TARVO_ACCESS_TOKEN_ACCESS_TOKEN_H

// Token identifiers of the platform's access-control layer.
//
// Layout of a 32-bit token id: bits 28-29 hold the token type (ATokenTypeEnum), bits 0-19 a serial
// unique within the type; the other bits are zero. A 64-bit full token id is the token id in its
// low 32 bits, with bit 32 set for a system application.

#include <cstdint>

namespace Tarvo::Security::AccessToken {

using AccessTokenID = uint32_t;
using FullTokenID = uint64_t;

enum ATokenTypeEnum {
    TOKEN_HAP = 0,
    TOKEN_NATIVE = 1,
    TOKEN_SHELL = 2,
    TOKEN_TYPE_BUTT,
    TOKEN_INVALID = -1,
};

}  // namespace Tarvo::Security::AccessToken

#endif  // TARVO_ACCESS_TOKEN_ACCESS_TOKEN_H
