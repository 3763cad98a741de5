#include "zel_test_processes.h"

#include "access_token_kit.h"
#include "tokenid_kit.h"

namespace Tarvo::Vantel::Test {
using namespace Tarvo::Security::AccessToken;

std::shared_ptr<VirtualProcess> MakeCaller(CallerKind kind, int32_t pid)
{
    ATokenTypeEnum type = TOKEN_HAP;
    if (kind == CallerKind::NATIVE) {
        type = TOKEN_NATIVE;
    } else if (kind == CallerKind::SHELL) {
        type = TOKEN_SHELL;
    }
    AccessTokenID token = AccessTokenKit::MakeTokenId(type, static_cast<uint32_t>(pid));
    FullTokenID full = TokenIdKit::MakeFullTokenId(token, kind == CallerKind::SYSTEM_APP);
    return VirtualProcess::Create({pid, 20010000 + pid, token, full, KindName(kind)});
}

std::string KindName(CallerKind kind)
{
    switch (kind) {
        case CallerKind::SYSTEM_APP:
            return "system_app";
        case CallerKind::NATIVE:
            return "native";
        case CallerKind::SHELL:
            return "shell";
        case CallerKind::ORDINARY_APP:
            return "ordinary_app";
    }
    return "?";
}

}  // namespace Tarvo::Vantel::Test
