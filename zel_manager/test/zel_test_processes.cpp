#include "zel_test_processes.h"

#include "platform_test_support.h"

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
    return VirtualProcess::Create(
        Tarvo::Test::MakeIdentity(pid, 20010000 + pid, type, kind == CallerKind::SYSTEM_APP, KindName(kind)));
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
