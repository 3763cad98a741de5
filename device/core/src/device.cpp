#include "device.h"

#include <filesystem>

#include "config_folders.h"
#include "device_layout.h"
#include "device_services.h"
#include "device_tap.h"
#include "hilog.h"
#include "input_text.h"
#include "ipc_skeleton.h"
#include "ipc_transport.h"
#include "platform_clock.h"
#include "zel_log.h"

namespace Tarvo::Emu {
namespace fs = std::filesystem;

using namespace DeviceLayout;

Device::Device(DeviceSetup setup) : setup_(std::move(setup)), data_(setup_.dataDir, setup_.keepDataDir)
{
    failure_ = data_.Failure();
    trace_.Hide(data_.Path(), DATA_PLACEHOLDER);
    HiviewDFX::HiLogOutput::SetStderrEnabled(setup_.log);
    HiviewDFX::HiLogOutput::SetTimeSource([] { return PlatformClock::now().time_since_epoch().count(); });
    // The hooks hold the tap, not the device: a call still running in them when the device goes
    // finds it detached.
    tap_ = std::make_shared<DeviceTap>(trace_);
    HiviewDFX::HiLogOutput::AddSink(tap_);
    IPCTransport::Get().SetTransactionObserver(
        [tap = tap_](const TransactionRecord& record) { tap->OnTransaction(record); });

    samgrProcess_ = VirtualProcess::Create(SamgrIdentity());
    {
        ScopedProcess scope(samgrProcess_);
        samgr_ = new DeviceServiceManager();
    }
    IPCSkeleton::SetContextObject(samgr_);
    systemCaller_ = VirtualProcess::Create(CallerIdentity(CallerSpec::Kind::SYSTEM));
    nativeCaller_ = VirtualProcess::Create(CallerIdentity(CallerSpec::Kind::NATIVE));
    shellCaller_ = VirtualProcess::Create(CallerIdentity(CallerSpec::Kind::SHELL));
    ConfigPolicy::SetConfigFolders({ConfigFolder(data_.Path())});
    services_ = std::make_unique<DeviceServices>(*this);
    std::string reason;
    if (!services_->Start(&reason)) {
        failure_ = "a system service could not start: " + reason;
    }
    if (!setup_.defaultConfig.empty() && fs::exists(setup_.defaultConfig)) {
        UseConfigFile(data_.Path(), setup_.scenarioDir, setup_.defaultConfig, nullptr);
    }
}

Device::~Device()
{
    IPCTransport::Get().SetTransactionObserver(nullptr);
    HiviewDFX::HiLogOutput::RemoveSink(tap_);
    // Waits for the calls still inside the hooks; none reaches the trace after.
    tap_->Detach();
}

std::shared_ptr<VirtualProcess> Device::MakeServiceProcess(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    int32_t pid = nextServicePid_++;
    return VirtualProcess::Create(NativeIdentity(pid, name));
}

std::shared_ptr<VirtualProcess> Device::AppProcess(const std::string& bundle)
{
    std::optional<Package> package = catalog_.FindByBundle(bundle);
    if (!package) {
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto& process = appProcesses_[bundle];
    if (process == nullptr || !process->IsAlive()) {
        int32_t pid = nextAppPid_++;
        process = VirtualProcess::Create(AppIdentity(pid, *package));
    }
    return process;
}

void Device::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    samgr_->AddSystemAbility(id, object);
}

bool Device::UseConfig(const std::optional<std::string>& path, std::string* error)
{
    return UseConfigFile(data_.Path(), setup_.scenarioDir, path, error);
}

bool Device::SetParam(const std::string& key, const std::string& value, std::string*)
{
    services_->params->Preset(key, value);
    return true;
}

bool Device::PresetSetting(const std::string& key, const std::string& value, std::string* error)
{
    if (!services_->settings->Preset(key, value)) {
        if (error != nullptr) {
            *error = "cannot write setting " + Shown(key);
        }
        return false;
    }
    return true;
}

bool Device::Boot(std::string* error)
{
    if (host_ != nullptr) {
        if (error != nullptr) {
            *error = "the device has already booted";
        }
        return false;
    }
    serviceProcess_ = VirtualProcess::Create(ServiceIdentity());
    tap_->SetServicePid(SERVICE_PID);
    auto host = std::make_unique<ServiceHost>(serviceProcess_);
    std::string reason;
    if (!host->LoadLibrary(setup_.serviceLibrary, &reason)) {
        failure_ = "the service library could not be loaded: " + reason;
        if (error != nullptr) {
            *error = failure_;
        }
        return false;
    }
    host_ = std::move(host);
    host_->StartAbilities();
    return true;
}

int32_t Device::ServicePid() const
{
    return serviceProcess_ != nullptr ? serviceProcess_->Pid() : 0;
}

void Device::Shutdown()
{
    if (host_ != nullptr) {
        host_->StopAbilities();
    }
}

std::string Device::Failure() const
{
    return failure_;
}

}  // namespace Tarvo::Emu
