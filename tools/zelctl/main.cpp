// zelctl: a client of a serving device (zel_device serve) that calls the frame-rate service as a
// caller of the device would, dumps its state, or listens to the rates a game is told.

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "hilog.h"
#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "zel_manager_proxy.h"
#include "zelctl_args.h"
#include "zelctl_client.h"
#include "zelctl_listen.h"

namespace Tarvo::Zelctl {
namespace {
using Vantel::ZelManagerProxy;

// The caller each request has on the device unless --as says otherwise.
std::string DefaultCaller(Verb verb)
{
    return verb == Verb::SCENE ? "system" : "native";
}

// What the proxy returned, and whether that is the service's success for that request.
int Report(int64_t result, bool success)
{
    printf("%lld\n", static_cast<long long>(result));
    return success ? OK : REFUSED;
}

int Request(const Command& command, ZelManagerProxy& proxy)
{
    switch (command.verb) {
        case Verb::SCENE:
            proxy.SetScene(command.pkg, command.scene, command.state);
            return OK;  // one-way: nothing comes back
        case Verb::RESOLUTION: {
            int32_t result = proxy.ChangeResolutionMode(command.mode, command.flag);
            return Report(result, result == 0);
        }
        case Verb::THERMAL: {
            std::map<uint32_t, uint32_t> map;
            for (const auto& [key, value] : command.thermal) {
                map[key] = value;
            }
            uint32_t result = proxy.SetThermalPolicy(map);
            return Report(result, result == 1);
        }
        default: {
            uint32_t result = proxy.SetGameFpsForThermalControl(command.pkg, command.fps);
            return Report(result, result == 0);
        }
    }
}

int Dump(const Command& command, const sptr<IRemoteObject>& manager)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    (void)data.WriteInterfaceToken(Vantel::IZelManager::GetDescriptor());
    (void)data.WriteInt32(command.json ? 1 : 0);
    if (command.json) {
        (void)data.WriteString16(u"--json");
    }
    int32_t result = -1;
    std::string text;
    int status = manager->SendRequest(DUMP_TRANSACTION, data, reply, option);
    if (status != ERR_NONE || !reply.ReadInt32(result) || !reply.ReadString(text)) {
        fprintf(stderr, "zelctl: the dump failed (transport status %d)\n", status);
        return REFUSED;
    }
    fwrite(text.data(), 1, text.size(), stdout);
    return result == 0 ? OK : REFUSED;
}

int Run(const Command& command)
{
    const std::string runDir = command.runDir.empty() ? DefaultRunDir() : command.runDir;
    DeviceLink link(runDir);
    std::string error;
    const std::string caller = command.as.empty() ? DefaultCaller(command.verb) : command.as;
    if (Status status = link.Join(caller, &error); status != OK) {
        fprintf(stderr, "zelctl: %s\n", error.c_str());
        return status;
    }
    sptr<IRemoteObject> manager = link.Manager(&error);
    if (manager == nullptr) {
        fprintf(stderr, "zelctl: %s\n", error.c_str());
        if (command.verb == Verb::DUMP || command.verb == Verb::LISTEN) {
            return REFUSED;
        }
    }
    if (command.verb == Verb::DUMP) {
        return Dump(command, manager);
    }
    ZelManagerProxy proxy(manager);
    if (command.verb == Verb::LISTEN) {
        return Listen(command, proxy, link);
    }
    return Request(command, proxy);
}
}  // namespace
}  // namespace Tarvo::Zelctl

int main(int argc, char** argv)
{
    using namespace Tarvo::Zelctl;
    std::vector<std::string> args(argv + 1, argv + argc);
    Command command;
    std::string error;
    if (!ParseArgs(args, &command, &error)) {
        fprintf(stderr, "zelctl: %s\n%s", error.c_str(), Usage(command.topic).c_str());
        return USAGE;
    }
    if (command.verb == Verb::HELP) {
        fputs(Usage(command.topic).c_str(), stdout);
        return OK;
    }
    // The platform's log is the device's business, not the user's.
    Tarvo::HiviewDFX::HiLogOutput::SetStderrEnabled(getenv("ZELCTL_LOG") != nullptr);
    if (command.verb == Verb::LISTEN) {
        BlockStopSignals();
    }
    return Run(command);
}
