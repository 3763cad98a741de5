#ifndef TARVO_ACCESS_TOKEN_TOKENID_KIT_H
#define TARVO_ACCESS_TOKEN_TOKENID_KIT_H

// The system-application flag of full token ids (bit 32, layout in access_token.h).

#include "access_token.h"

namespace Tarvo::Security::AccessToken {

class TokenIdKit {
public:
    static bool IsSystemAppByFullTokenID(uint64_t tokenId);
    static FullTokenID MakeFullTokenId(AccessTokenID id, bool systemApp);
};

}  // namespace Tarvo::Security::AccessToken

#endif  // TARVO_ACCESS_TOKEN_TOKENID_KIT_H
