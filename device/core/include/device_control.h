#ifndef ZEL_DEVICE_DEVICE_CONTROL_H
#define ZEL_DEVICE_DEVICE_CONTROL_H

// What the scenario player asks of the device: one operation per scenario command. The player
// owns time (it moves the virtual clock and waits for quiet between lines); every operation here
// returns once its action has been started, and reports bad arguments as false with a reason,
// changing nothing.

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "package_catalog.h"
#include "process_session.h"
#include "trace.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {

// Who sends a request to the service.
struct CallerSpec {
    enum class Kind { SYSTEM, NATIVE, SHELL, BUNDLE };
    Kind kind = Kind::NATIVE;
    std::string bundle;  // for BUNDLE: that application's process
    bool operator==(const CallerSpec&) const = default;
};

// One field of a raw request, written after the interface token in the parcel's own encodings.
struct RawField {
    enum class Kind { STRING, INT32, UINT32, BOOL, INT32_VECTOR, UINT32_VECTOR, BYTES };
    Kind kind = Kind::UINT32;
    std::string text;             // STRING: the text; BYTES: the bytes (padded as every field is)
    std::vector<uint32_t> words;  // INT32, UINT32, BOOL: the one value; vectors: the elements
    bool operator==(const RawField&) const = default;
};

// A request with any code and any fields, to the service or to a game's callback object.
struct RawRequest {
    CallerSpec caller{CallerSpec::Kind::SYSTEM, {}};
    uint32_t code = 0;
    bool writeToken = true;
    std::optional<std::u16string> token;  // unset: the target's own descriptor
    std::vector<RawField> fields;
    bool oneWay = false;
    // A callback object made by Register(bundle, callback); an empty bundle: the service.
    std::string bundle;
    std::string callback;
    bool operator==(const RawRequest&) const = default;
};

class DeviceControl {
public:
    virtual ~DeviceControl() = default;

    // Set-up, before Boot.
    virtual bool UseConfig(const std::optional<std::string>& path, std::string* error) = 0;  // nullopt: no file
    virtual bool SetParam(const std::string& key, const std::string& value, std::string* error) = 0;
    virtual bool PresetSetting(const std::string& key, const std::string& value, std::string* error) = 0;

    virtual bool Boot(std::string* error) = 0;
    virtual bool IsBooted() const = 0;

    // Device state and faults.
    virtual bool InstallPackage(const Package& package, std::string* error) = 0;    // after boot: package-added
    virtual bool RemovePackage(const std::string& bundle, std::string* error) = 0;  // package-removed
    virtual bool IsInstalled(const std::string& bundle) const = 0;
    virtual void SetAbilityObtainable(int32_t id, bool obtainable) = 0;
    virtual void SetServiceManagerUp(bool up) = 0;
    virtual void SetSettingsUp(bool up) = 0;
    virtual void SetCategoryUp(bool up) = 0;
    virtual bool RestartAppManager(std::string* error) = 0;
    virtual bool KillApp(const std::string& bundle, std::string* error) = 0;
    virtual bool SetIpcFail(const std::string& bundle, bool fail, std::string* error) = 0;

    // Requests to the service; `line` tags the request for its ipc.done event. A request that never
    // reaches the service's stub (the service is not obtainable, the request cannot be written, the
    // transport refuses it) is traced as ipc.unsent {line, code, result} instead.
    virtual bool SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene,
                           uint32_t state, std::string* error) = 0;
    virtual bool SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error) = 0;
    // Pairs in order, repeats kept.
    virtual bool SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                             std::string* error) = 0;
    virtual bool SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps,
                             std::string* error) = 0;
    virtual bool Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error) = 0;
    // Sent as given; false (nothing sent) only when the caller or the callback does not exist.
    virtual bool SendRaw(int line, const RawRequest& request, std::string* error) = 0;
    // Asks the service for its live state, from the shell; traced as dump {line, state}.
    virtual bool Dump(int line, std::string* error) = 0;

    // Platform events.
    virtual bool AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid,
                          std::optional<bool> focus, std::string* error) = 0;
    virtual bool PowerMode(int32_t code, std::string* error) = 0;
    virtual bool PublishEvent(const std::string& action, const std::optional<std::string>& bundle,
                              std::optional<int32_t> code, std::string* error) = 0;
    virtual bool Light(uint32_t type, bool state, std::string* error) = 0;

    // A process outside the device (a client such as zelctl) acts as `caller` from now on: its
    // real pid gets a fresh emulated identity of that kind (an installed bundle: that application's
    // uid). Only a device in real processes has a registry to put it in.
    virtual bool AdoptProcess(pid_t realPid, const CallerSpec& caller, ProcessIdentity* given, std::string* error)
    {
        (void)realPid;
        (void)caller;
        (void)given;
        *error = "this device cannot adopt outside processes";
        return false;
    }

    virtual Trace& GetTrace() = 0;
    // A crash or hang of the device or the service, once detected; empty while healthy.
    virtual std::string Failure() const = 0;
    // The service stops (OnStop of its abilities), as when a serving device is told to end.
    virtual void Shutdown() {}
    // Waits until no work is in flight anywhere in the device; false if nothing moved on for
    // `stallLimit` of real time (a hang).
    virtual bool WaitQuiet(std::chrono::milliseconds stallLimit) { return VirtualClock::WaitQuiet(stallLimit); }
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_CONTROL_H
