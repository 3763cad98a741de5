// Requests of scenario lines, sent by the process of their caller exactly as the in-process device
// sends them. A synchronous request reached the stub when an ipc.done of its line came to the hub
// before the sender's reply: the stub's process emits it before it answers.
#include "input_text.h"
#include "process_device.h"

namespace Tarvo::Emu {

bool ProcessDevice::Deliver(Child& from, const RequestOrder& order, const sptr<IRemoteObject>& object,
                            const std::string& watcher, std::string* error, AgentReply* reply)
{
    AgentControl control;
    control.order = order;
    if (!watcher.empty()) {
        control.code = AgentCode::WATCH;
        if (!Control(watcher, control, error)) {
            return false;
        }
    }
    control.code = AgentCode::SEND;
    control.object = object;
    AgentReply answer;
    reply = reply != nullptr ? reply : &answer;
    const size_t from_ = trace_.Size();
    if (!Control(from.name, control, error, reply)) {
        return false;
    }
    bool delivered = false;
    for (const TraceEvent& event : trace_.EventsSince(from_)) {
        const TraceValue* line = event.Find("line");
        delivered =
            delivered || (event.ev == "ipc.done" && line != nullptr && *line == TraceValue{int64_t{order.line}});
    }
    TraceUnlessReached(trace_, order, reply->outcome, delivered);
    return true;
}

bool ProcessDevice::ToService(const CallerSpec& caller, const RequestOrder& order, std::string* error)
{
    Child* child = CallerChild(caller, error);
    return child != nullptr && Deliver(*child, order, nullptr, "", error);
}

bool ProcessDevice::SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene,
                              uint32_t state, std::string* error)
{
    return ToService(caller, SceneOrder(line, pkg, scene, state), error);
}

bool ProcessDevice::SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error)
{
    return ToService(caller, ResolutionOrder(line, mode, flag), error);
}

bool ProcessDevice::SendThermal(int line, const CallerSpec& caller,
                                const std::vector<std::pair<uint32_t, uint32_t>>& map, std::string* error)
{
    return ToService(caller, ThermalOrder(line, map), error);
}

bool ProcessDevice::SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps,
                                std::string* error)
{
    return ToService(caller, GameFpsOrder(line, pkg, fps), error);
}

// The application's process makes the callback object and hands it back with the outcome.
bool ProcessDevice::Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error)
{
    Child* app = AppChild(bundle, error);
    AgentReply reply;
    if (app == nullptr || !Deliver(*app, RegisterOrder(line, callbackName), nullptr, "", error, &reply)) {
        return false;
    }
    callbacks_[bundle + "/" + callbackName] = Callback{reply.object, app->name};
    return true;
}

bool ProcessDevice::SendRaw(int line, const RawRequest& request, std::string* error)
{
    Child* sender = CallerChild(request.caller, error);
    if (sender == nullptr) {
        return false;
    }
    if (request.bundle.empty()) {
        return Deliver(*sender, RawOrder(line, request), nullptr, "", error);
    }
    auto callback = callbacks_.find(request.bundle + "/" + request.callback);
    if (callback == callbacks_.end()) {
        return Fail(error, NoCallback(request));
    }
    // A callback whose process died has only a dead proxy left, which cannot travel. A process this
    // device killed is dead already, whether or not the transport has seen its connections close.
    const bool alive = callback->second.object != nullptr && !callback->second.object->IsObjectDead() &&
                       Find(callback->second.owner) != nullptr;
    return Deliver(*sender, RawOrder(line, request), alive ? callback->second.object : nullptr,
                   alive ? callback->second.owner : "", error);
}

bool ProcessDevice::Dump(int line, std::string* error)
{
    Child* shell = CallerChild(CallerSpec{CallerSpec::Kind::SHELL, {}}, error);
    const RequestOrder order = DumpOrder(line);
    AgentReply reply;
    if (shell == nullptr || !Deliver(*shell, order, nullptr, "", error, &reply)) {
        return false;
    }
    TraceDump(trace_, order, reply.outcome);
    return true;
}

}  // namespace Tarvo::Emu
