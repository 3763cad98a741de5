#ifndef TARVO_IPC_SOCKET_TEST_SOCKET_TEST_SUPPORT_H
#define TARVO_IPC_SOCKET_TEST_SOCKET_TEST_SUPPORT_H

// The socket transport installed once per test process, in a run folder of its own.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "socket_transport.h"

namespace Tarvo::SocketTest {

// Short, so that socket paths stay within the address limit; removed when the process ends.
inline const std::string& RunDir()
{
    static const std::string dir = [] {
        char pattern[] = "/tmp/zs-XXXXXX";
        const char* made = mkdtemp(pattern);
        if (made != nullptr) {
            std::atexit([] {
                std::error_code ignored;
                std::filesystem::remove_all(RunDir(), ignored);
            });
        }
        return std::string(made != nullptr ? made : "/tmp");
    }();
    return dir;
}

inline SocketTransport& Transport()
{
    static auto* transport = [] {
        auto* made = new SocketTransport({RunDir()});
        IPCTransport::Install(made);
        return made;
    }();
    return *transport;
}

}  // namespace Tarvo::SocketTest

#endif  // TARVO_IPC_SOCKET_TEST_SOCKET_TEST_SUPPORT_H
