#ifndef ZEL_DEVICE_PROCESS_MODE_PROCESS_DEVICE_H
#define ZEL_DEVICE_PROCESS_MODE_PROCESS_DEVICE_H

// The device with every emulated process a real process of zel_device (`zel_device process`, see
// device_process.h): the service manager, each system service, the service host, the three caller
// processes and each application process (started on first use). This process is the controller:
// it owns the run folder, the registry, the trace and the package catalogue, and publishes the hub
// the others attach to. Every control is a synchronous request to the process that owns what it
// touches, made from the calling thread.
//
// Contract: as DeviceControl. Every process counts its work in flight in the page RUNDIR/time, a
// one-way request on its way in its receiver's share, so WaitQuiet sees the whole device. In
// virtual time the processes also share the clock and the line of turns there, and the controller moves time
// through each of them in a fixed order, so a scenario gives the in-process device's trace; a
// death is told to every process by the controller, in a fixed order too. Trace fields that hold a
// real pid may differ from the in-process device's.

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device.h"
#include "device_agent.h"
#include "device_control.h"
#include "device_layout.h"
#include "process_launcher.h"
#include "process_registry.h"
#include "run_dir.h"

namespace Tarvo::Emu {

struct ProcessDeviceSetup {
    DeviceSetup device;
    std::string runDir;        // empty: a temporary one, removed with the device
    std::string executable;    // zel_device, run as `zel_device process`; empty: this program
    bool virtualTime = false;  // installed by the device, before its processes start
};

class ProcessDevice : public DeviceControl {
public:
    // The controller's own emulated pid.
    static constexpr int32_t CONTROLLER_PID = 5;

    explicit ProcessDevice(ProcessDeviceSetup setup);
    ~ProcessDevice() override;
    ProcessDevice(const ProcessDevice&) = delete;
    ProcessDevice& operator=(const ProcessDevice&) = delete;

    bool UseConfig(const std::optional<std::string>& path, std::string* error) override;
    bool SetParam(const std::string& key, const std::string& value, std::string* error) override;
    bool PresetSetting(const std::string& key, const std::string& value, std::string* error) override;
    bool Boot(std::string* error) override;
    bool IsBooted() const override { return booted_; }
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
    bool AdoptProcess(pid_t realPid, const CallerSpec& caller, ProcessIdentity* given, std::string* error) override;
    Trace& GetTrace() override { return trace_; }
    std::string Failure() const override;
    void Shutdown() override;
    bool WaitQuiet(std::chrono::milliseconds stallLimit) override;

    // The run folder; empty if none could be made.
    std::string RunPath() const;
    // The real pid of an application's process, 0 when none runs.
    pid_t AppRealPid(const std::string& bundle) const;

private:
    struct Child {
        std::string name;
        int32_t pid = 0;  // emulated
        std::unique_ptr<ChildProcess> process;
        sptr<IRemoteObject> agent;
    };
    struct Callback {
        sptr<IRemoteObject> object;
        std::string owner;  // the name of the process it lives in
    };

    bool Start();
    bool StartChild(const std::string& name, const std::string& role, const std::string& arg,
                    const ProcessIdentity& identity, std::string* error);
    bool AwaitAttach(Child& child, std::string* error);
    bool StartTime();
    // A child is gone: its part of the time page is cleared and every process told, in pid order.
    void Bury(Child& child);
    std::vector<Child*> ByPid();
    void OnAttach(const sptr<IRemoteObject>& agent);
    Child* Find(const std::string& name);
    // Sends one control; false with the reason if the process did not take it.
    bool Control(const std::string& name, AgentControl control, std::string* error, AgentReply* reply = nullptr);
    void ControlQuietly(const std::string& name, AgentControl control);
    Child* AppChild(const std::string& bundle, std::string* error);
    Child* CallerChild(const CallerSpec& caller, std::string* error);
    bool ToService(const CallerSpec& caller, const RequestOrder& order, std::string* error);
    // Sends the order from `from`; `watcher` (the process of a callback it goes to) is told the line first.
    bool Deliver(Child& from, const RequestOrder& order, const sptr<IRemoteObject>& object, const std::string& watcher,
                 std::string* error, AgentReply* reply = nullptr);
    bool SyncCatalog(const std::string& name, std::string* error);
    class Fleet;
    bool Fail(std::string* error, const std::string& reason) const;

    const ProcessDeviceSetup setup_;
    DataDirectory data_;
    Trace trace_;
    PackageCatalog catalog_;
    std::unique_ptr<RunDir> ownRunDir_;
    std::string runPath_;
    std::string executable_;
    std::unique_ptr<ProcessRegistry> registry_;
    sptr<IRemoteObject> hub_;
    std::map<std::string, Child> children_;
    std::map<std::string, Callback> callbacks_;  // by "BUNDLE/CBNAME"
    int32_t nextServicePid_ = DeviceLayout::FIRST_SERVICE_PID;
    int32_t nextAppPid_ = DeviceLayout::FIRST_APP_PID;
    int32_t nextAdoptedPid_ = DeviceLayout::FIRST_ADOPTED_PID;
    bool booted_ = false;
    mutable std::string failure_;

    std::mutex attachMutex_;
    std::condition_variable attached_;
    std::map<int32_t, sptr<IRemoteObject>> agents_;  // by emulated pid, as they attach
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESS_MODE_PROCESS_DEVICE_H
