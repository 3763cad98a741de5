// The device's requests to the service (and raw requests to games' callback objects), each tagged
// with its scenario line; one that never reaches its target's stub is traced as ipc.unsent.
#include "device.h"
#include "device_tap.h"
#include "input_text.h"
#include "ipc_transport.h"

namespace Tarvo::Emu {

Device::Target Device::ServiceTarget()
{
    return Target{LookUpService(), Vantel::IZelManager::GetDescriptor(), 0, {}};
}

SendOutcome Device::Deliver(const std::shared_ptr<VirtualProcess>& process, const RequestOrder& order,
                            const std::function<Target()>& target, const sptr<IRemoteObject>& callback)
{
    ScopedProcess scope(process);
    IPCTransport::ScopedTag tag(static_cast<uint64_t>(order.line));
    Target found = target();
    tap_->Watch(static_cast<uint64_t>(order.line), found.descriptor, found.appPid, found.bundle);
    const SendOutcome outcome = SendOrder(order, found.object, callback);
    TraceUnlessReached(trace_, order, outcome, tap_->Delivered());
    return outcome;
}

bool Device::ToService(const CallerSpec& caller, const RequestOrder& order, std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    Deliver(process, order, [this] { return ServiceTarget(); });
    return true;
}

bool Device::SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene,
                       uint32_t state, std::string* error)
{
    return ToService(caller, SceneOrder(line, pkg, scene, state), error);
}

bool Device::SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error)
{
    return ToService(caller, ResolutionOrder(line, mode, flag), error);
}

bool Device::SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                         std::string* error)
{
    return ToService(caller, ThermalOrder(line, map), error);
}

bool Device::SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps, std::string* error)
{
    return ToService(caller, GameFpsOrder(line, pkg, fps), error);
}

bool Device::Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error)
{
    auto process = AppProcess(bundle);
    if (process == nullptr) {
        return Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    sptr<GameCallback> callback;
    {
        ScopedProcess scope(process);
        callback = new GameCallback(tap_, bundle, callbackName);
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        callbacks_[bundle + "/" + callbackName] = Callback{callback, process->Pid()};
    }
    Deliver(
        process, RegisterOrder(line, callbackName), [this] { return ServiceTarget(); }, callback->AsObject());
    return true;
}

bool Device::SendRaw(int line, const RawRequest& request, std::string* error)
{
    auto process = CallerProcess(request.caller, error);
    if (process == nullptr) {
        return false;
    }
    std::function<Target()> target = [this] { return ServiceTarget(); };
    if (!request.bundle.empty()) {
        std::optional<Callback> callback;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (auto it = callbacks_.find(request.bundle + "/" + request.callback); it != callbacks_.end()) {
                callback = it->second;
            }
        }
        if (!callback) {
            return Fail(error, NoCallback(request));
        }
        target = [callback, &request] {
            // The calling process's own view of the object: a proxy, as a client gets it.
            MessageParcel carrier;
            carrier.WriteRemoteObject(callback->object->AsObject());
            return Target{carrier.ReadRemoteObject(), Vantel::IZelCallbackInterface::GetDescriptor(), callback->pid,
                          request.bundle};
        };
    }
    Deliver(process, RawOrder(line, request), target);
    return true;
}

bool Device::Dump(int line, std::string* error)
{
    auto process = CallerProcess(CallerSpec{CallerSpec::Kind::SHELL, {}}, error);
    if (process == nullptr) {
        return false;
    }
    const RequestOrder order = DumpOrder(line);
    TraceDump(trace_, order, Deliver(process, order, [this] { return ServiceTarget(); }));
    return true;
}

}  // namespace Tarvo::Emu
