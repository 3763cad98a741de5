#ifndef ZEL_DEVICE_REQUEST_ORDER_H
#define ZEL_DEVICE_REQUEST_ORDER_H

// One request a scenario line makes to the service (or, raw, to a game's callback object), as the
// sending process carries it out: through the client proxies, tagged with its line. The same code
// sends it whether the sender is a virtual process of the device or a real process of its own.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "device_control.h"
#include "iremote_object.h"
#include "trace.h"

namespace Tarvo::Emu {

struct RequestOrder {
    enum class Kind : uint32_t { SCENE = 1, RESOLUTION, THERMAL, GAME_FPS, REGISTER, RAW, DUMP };
    static constexpr uint32_t kLastKind = static_cast<uint32_t>(Kind::DUMP);

    Kind kind = Kind::SCENE;
    int32_t line = 0;
    std::string name;                                    // SCENE, GAME_FPS: the package; REGISTER: the callback's name
    std::string scene;                                   // SCENE
    uint32_t value = 0;                                  // SCENE: the state; GAME_FPS: the rate
    int32_t mode = 0;                                    // RESOLUTION
    int32_t flag = 0;                                    // RESOLUTION
    std::vector<std::pair<uint32_t, uint32_t>> thermal;  // in order, repeats kept
    RawRequest raw;                                      // RAW

    uint32_t Code() const;
    bool OneWay() const;
    // The interface of what it goes to: the manager's, or a callback's for a raw one to a callback.
    std::u16string TargetDescriptor() const;
    bool operator==(const RequestOrder&) const = default;
};

// The order of each request command.
RequestOrder SceneOrder(int line, const std::string& pkg, const std::string& scene, uint32_t state);
RequestOrder ResolutionOrder(int line, int32_t mode, int32_t flag);
RequestOrder ThermalOrder(int line, const std::vector<std::pair<uint32_t, uint32_t>>& map);
RequestOrder GameFpsOrder(int line, const std::string& pkg, uint32_t fps);
RequestOrder RegisterOrder(int line, const std::string& callbackName);
RequestOrder RawOrder(int line, const RawRequest& request);
// The service's state as JSON; the outcome's result is the text, or what the transport answered.
RequestOrder DumpOrder(int line);
// Why a raw request to a callback cannot be sent.
std::string NoCallback(const RawRequest& request);

// What the sender saw.
struct SendOutcome {
    bool sent = false;  // the proxy sent a request at all
    int status = 0;     // what the transport answered
    TraceValue result;  // what the sender got back; null for nothing
};

// The service as the calling thread's process finds it through the service manager, or null.
sptr<IRemoteObject> LookUpService();

// Sends the order from the calling thread's process to `target` (null: none to be had) as a client
// would; `callback` is the object REGISTER hands over. The caller sets the line's tag.
SendOutcome SendOrder(const RequestOrder& order, const sptr<IRemoteObject>& target,
                      const sptr<IRemoteObject>& callback);

// Reached means handled by the target's stub (`delivered`: an ipc.done of the line was seen); for a
// one-way request, queued for it, since its handling comes later. Traces ipc.unsent otherwise.
void TraceUnlessReached(Trace& trace, const RequestOrder& order, const SendOutcome& outcome, bool delivered);
// A dump that came back is traced as dump {line, state}.
void TraceDump(Trace& trace, const RequestOrder& order, const SendOutcome& outcome);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_REQUEST_ORDER_H
