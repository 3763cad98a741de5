#ifndef ZEL_DEVICE_DEVICE_H
#define ZEL_DEVICE_DEVICE_H

// The emulated device: the service manager, every system service the service talks to (each a
// system ability in its own virtual process), application processes, the service host that
// loads the service library at boot, and the trace of what crosses the service's boundary.
//
// Contract: construct, apply set-up (config, params, settings), Boot, then drive it; the
// caller owns time (the virtual clock) and waits for quiet between operations. Requests to the
// service are made from a caller process with ZelManagerProxy (the thermal map by hand, to keep
// the order and repeats of its pairs) and tagged with their scenario line for ipc.done; a request
// that never reaches the service's stub is traced as ipc.unsent. The run's data directory is
// written as $DATA in the trace.

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "device_context.h"
#include "device_control.h"
#include "device_layout.h"
#include "device_service_manager.h"
#include "game_callback.h"
#include "i_zel_manager.h"
#include "request_order.h"
#include "service_host.h"

namespace Tarvo::Emu {

class DeviceServices;
class DeviceTap;

struct DeviceSetup {
    std::string dataDir;         // empty: a new temporary directory
    bool keepDataDir = false;    // a given directory is always kept
    bool log = false;            // the platform log on stderr
    std::string serviceLibrary;  // the library the host loads at boot
    std::string defaultConfig;   // the default product configuration; empty: none
    std::string scenarioDir;     // relative config paths start here
};

class Device : public DeviceContext, public DeviceControl {
public:
    static constexpr int32_t ZEL_MANAGER_SERVICE_ID = 65958;
    // What the trace writes for the run's data directory.
    static constexpr const char* DATA_PLACEHOLDER = "$DATA";

    explicit Device(DeviceSetup setup);
    ~Device() override;

    // DeviceContext
    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) override;
    std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) override;
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override;
    const std::string& DataDir() const override { return data_.Path(); }

    // DeviceControl
    bool UseConfig(const std::optional<std::string>& path, std::string* error) override;
    bool SetParam(const std::string& key, const std::string& value, std::string* error) override;
    bool PresetSetting(const std::string& key, const std::string& value, std::string* error) override;
    bool Boot(std::string* error) override;
    bool IsBooted() const override { return host_ != nullptr; }
    bool InstallPackage(const Package& package, std::string* error) override;
    bool RemovePackage(const std::string& bundle, std::string* error) override;
    bool IsInstalled(const std::string& bundle) const override;
    void SetAbilityObtainable(int32_t id, bool obtainable) override;
    void SetServiceManagerUp(bool up) override;
    void SetSettingsUp(bool up) override;
    void SetCategoryUp(bool up) override;
    bool RestartAppManager(std::string* error) override;
    bool KillApp(const std::string& bundle, std::string* error) override;
    bool SetIpcFail(const std::string& bundle, bool fail, std::string* error) override;
    bool SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene, uint32_t state,
                   std::string* error) override;
    bool SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error) override;
    bool SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                     std::string* error) override;
    bool SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps,
                     std::string* error) override;
    bool Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error) override;
    bool SendRaw(int line, const RawRequest& request, std::string* error) override;
    bool Dump(int line, std::string* error) override;
    bool AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid, std::optional<bool> focus,
                  std::string* error) override;
    bool PowerMode(int32_t code, std::string* error) override;
    bool PublishEvent(const std::string& action, const std::optional<std::string>& bundle, std::optional<int32_t> code,
                      std::string* error) override;
    bool Light(uint32_t type, bool state, std::string* error) override;
    std::string Failure() const override;
    void Shutdown() override;

    // The pid of the process the service runs in; 0 before boot.
    int32_t ServicePid() const;
    // The process the service runs in, for a caller of its own (a benchmark); null before boot.
    const std::shared_ptr<VirtualProcess>& ServiceProcess() const { return serviceProcess_; }

private:
    // Where a request goes, as the sending process sees it.
    struct Target {
        sptr<IRemoteObject> object;  // null: none to be had
        std::u16string descriptor;
        int32_t appPid = 0;  // a callback's: the process it lives in
        std::string bundle;
    };
    // Sends the order from `process` to what `target` finds there, and traces ipc.unsent if it never
    // reached the target's stub.
    SendOutcome Deliver(const std::shared_ptr<VirtualProcess>& process, const RequestOrder& order,
                        const std::function<Target()>& target, const sptr<IRemoteObject>& callback = nullptr);
    bool ToService(const CallerSpec& caller, const RequestOrder& order, std::string* error);
    Target ServiceTarget();
    // False, with the reason.
    static bool Fail(std::string* error, const std::string& reason);
    std::shared_ptr<VirtualProcess> CallerProcess(const CallerSpec& caller, std::string* error);

    const DeviceSetup setup_;
    DataDirectory data_;  // written as $DATA in the trace
    Trace trace_;
    PackageCatalog catalog_;

    mutable std::mutex mutex_;
    int32_t nextServicePid_ = DeviceLayout::FIRST_SERVICE_PID;
    int32_t nextAppPid_ = DeviceLayout::FIRST_APP_PID;
    std::map<std::string, std::shared_ptr<VirtualProcess>> appProcesses_;
    struct Callback {
        sptr<GameCallback> object;
        int32_t pid = 0;  // of the process it lives in
    };
    std::map<std::string, Callback> callbacks_;  // by "BUNDLE/CBNAME"

    std::shared_ptr<VirtualProcess> samgrProcess_;
    sptr<DeviceServiceManager> samgr_;
    std::unique_ptr<DeviceServices> services_;
    std::shared_ptr<VirtualProcess> systemCaller_;
    std::shared_ptr<VirtualProcess> nativeCaller_;
    std::shared_ptr<VirtualProcess> shellCaller_;
    std::shared_ptr<VirtualProcess> serviceProcess_;
    std::unique_ptr<ServiceHost> host_;
    std::shared_ptr<DeviceTap> tap_;
    std::string failure_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_H
