#include "zelctl_client.h"

#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "if_system_ability_manager.h"
#include "ipc_transport.h"
#include "iservice_registry.h"
#include "process_registry.h"
#include "socket_transport.h"
#include "virtual_process.h"

namespace Tarvo::Zelctl {
namespace {
constexpr int32_t kManagerAbilityId = 65958;
// The device answers an adoption with a few short lines.
constexpr size_t kMaxAnswer = 4096;

int ConnectControl(const std::string& path)
{
    sockaddr_un address{};
    if (path.size() >= sizeof(address.sun_path)) {
        return -1;
    }
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, path.c_str(), path.size() + 1);
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

std::string ReadAnswer(int fd)
{
    std::string text;
    char buffer[512];
    while (text.size() < kMaxAnswer) {
        ssize_t got = read(fd, buffer, sizeof(buffer));
        if (got <= 0) {
            break;
        }
        text.append(buffer, static_cast<size_t>(got));
    }
    return text;
}
}  // namespace

std::string DefaultRunDir()
{
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/') {
        return std::string(runtime) + "/zel_device";
    }
    std::error_code ec;
    std::filesystem::path temp = std::filesystem::temp_directory_path(ec);
    return (ec || temp.empty() ? std::string("/tmp") : temp.string()) + "/zel_device-" + std::to_string(geteuid());
}

DeviceLink::~DeviceLink()
{
    Leave();
}

void DeviceLink::Leave()
{
    if (joined_) {
        ProcessRegistry(runDir_ + "/registry").Unregister(getpid());
        joined_ = false;
    }
}

Status DeviceLink::Adopt(const std::string& caller, std::string* error)
{
    int fd = ConnectControl(runDir_ + "/control");
    if (fd < 0) {
        *error = "no device serving in " + runDir_;
        return NO_DEVICE;
    }
    const std::string request = "adopt " + caller + "\n";
    bool sent = write(fd, request.data(), request.size()) == static_cast<ssize_t>(request.size());
    shutdown(fd, SHUT_WR);
    std::string answer = sent ? ReadAnswer(fd) : "";
    close(fd);
    if (answer.starts_with("1 ") && answer.find("\nexit 0\n") != std::string::npos) {
        joined_ = true;
        return OK;
    }
    // "2 zel_device: reason\nexit N\n": the reason is the first line after its channel number.
    const std::string prefix = "2 zel_device: ";
    size_t end = answer.find('\n');
    *error = answer.starts_with(prefix) ? "the device refused: " + answer.substr(prefix.size(), end - prefix.size())
                                        : "the device at " + runDir_ + " did not answer";
    return answer.starts_with(prefix) ? REFUSED : NO_DEVICE;
}

Status DeviceLink::Join(const std::string& caller, std::string* error)
{
    if (Status status = Adopt(caller, error); status != OK) {
        return status;
    }
    std::vector<ProcessIdentity> identities = ProcessRegistry(runDir_ + "/registry").IdentitiesOf(getpid());
    if (identities.size() != 1 || !VirtualProcess::SetHostIdentity(identities.front()) ||
        !IPCTransport::Install(new SocketTransport({runDir_}))) {
        *error = "no identity on the device at " + runDir_;
        return NO_DEVICE;
    }
    return OK;
}

sptr<IRemoteObject> DeviceLink::Manager(std::string* error)
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    sptr<IRemoteObject> manager = samgr != nullptr ? samgr->GetSystemAbility(kManagerAbilityId) : nullptr;
    if (manager == nullptr) {
        *error = samgr == nullptr ? "the device's service manager cannot be reached"
                                  : "the service is not obtainable (ability " + std::to_string(kManagerAbilityId) + ")";
    }
    return manager;
}

}  // namespace Tarvo::Zelctl
