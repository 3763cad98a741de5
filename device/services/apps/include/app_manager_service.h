#ifndef ZEL_DEVICE_APPS_APP_MANAGER_SERVICE_H
#define ZEL_DEVICE_APPS_APP_MANAGER_SERVICE_H

// The emulated application manager (system ability 501) in a process of its own. It keeps the
// state observers registered with it and calls them as the device reports application states.
//
// Contract: the device calls the control methods from one thread. The context outlives the
// service. Restart() kills the manager's process (holders of its object get death notices from
// the driver), then a new process with a new object, knowing no observers, is published under 501.

#include <cstdint>
#include <memory>
#include <string>

#include "device_context.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class AppManager;

class AppManagerService {
public:
    static constexpr int32_t SA_ID = 501;

    explicit AppManagerService(DeviceContext& ctx);
    ~AppManagerService();
    AppManagerService(const AppManagerService&) = delete;
    AppManagerService& operator=(const AppManagerService&) = delete;

    // Makes the process and publishes the manager; does nothing once started.
    void Start();
    // One-way OnForegroundApplicationChanged with this state (uid from the catalogue, 0 for an
    // unknown bundle) to every observer, from the manager's process. False when not running.
    bool NotifyAppState(const std::string& bundle, int32_t pid, int32_t state, bool focus);
    void Restart();

    size_t ObserverCount() const;
    // The manager's current process; null before Start().
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<AppManager> manager_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_APP_MANAGER_SERVICE_H
