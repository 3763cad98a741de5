#ifndef TARVO_ACCESS_TOKEN_ACCESS_TOKEN_KIT_H
#define TARVO_ACCESS_TOKEN_ACCESS_TOKEN_KIT_H

// Decoding and building of token ids (layout in access_token.h).

#include "access_token.h"

namespace Tarvo::Security::AccessToken {

class AccessTokenKit {
public:
    // The type stored in bits 28-29; TOKEN_INVALID when those bits hold no known type.
    static ATokenTypeEnum GetTokenTypeFlag(AccessTokenID tokenID);
    // A token id of the given type; the serial is cut to its low 20 bits. A type outside
    // TOKEN_HAP..TOKEN_SHELL yields an id that decodes as TOKEN_INVALID.
    static AccessTokenID MakeTokenId(ATokenTypeEnum type, uint32_t serial);
};

}  // namespace Tarvo::Security::AccessToken

#endif  // TARVO_ACCESS_TOKEN_ACCESS_TOKEN_KIT_H
