#include "tokenid_kit.h"

namespace Tarvo::Security::AccessToken {
namespace {
constexpr uint64_t kSystemAppBit = 1ULL << 32;
}  // namespace

bool TokenIdKit::IsSystemAppByFullTokenID(uint64_t tokenId)
{
    return (tokenId & kSystemAppBit) != 0;
}

FullTokenID TokenIdKit::MakeFullTokenId(AccessTokenID id, bool systemApp)
{
    return static_cast<FullTokenID>(id) | (systemApp ? kSystemAppBit : 0);
}

}  // namespace Tarvo::Security::AccessToken
