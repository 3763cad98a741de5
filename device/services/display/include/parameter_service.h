#ifndef ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_H

#include <memory>
#include <string>

#include "device_context.h"
#include "iremote_object.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class ParameterStore;

// The parameter service (system ability 1901). Parameters live in memory and in
// "<data dir>/parameters" (one "key=value" line each), loaded at Start so that a kept data
// directory keeps them. A set through IPC traces param.set {key, value}; a refused one (see
// IParameterService) changes and traces nothing.
class ParameterService {
public:
    explicit ParameterService(DeviceContext& ctx);
    ~ParameterService();
    ParameterService(const ParameterService&) = delete;
    ParameterService& operator=(const ParameterService&) = delete;

    // Loads the stored parameters (a parameter preset before takes precedence), makes the
    // service's process and publishes the service in it. Once.
    void Start();

    // Device set-up, before or after Start: sets and stores a parameter without a trace event.
    // An invalid pair is ignored.
    void Preset(const std::string& key, const std::string& value);

private:
    DeviceContext& ctx_;
    const std::shared_ptr<ParameterStore> store_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<IRemoteObject> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_SERVICE_H
