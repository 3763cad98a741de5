#include "device.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "access_token_kit.h"
#include "config_folders.h"
#include "device_services.h"
#include "device_tap.h"
#include "hilog.h"
#include "input_text.h"
#include "interrupt_cleanup.h"
#include "ipc_transport.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "platform_clock.h"
#include "tokenid_kit.h"
#include "zel_log.h"
#include "zel_manager_proxy.h"

namespace Tarvo::Emu {
namespace fs = std::filesystem;
using Security::AccessToken::AccessTokenKit;
using Security::AccessToken::ATokenTypeEnum;
using Security::AccessToken::TokenIdKit;

namespace {
constexpr int32_t SERVICE_PID = 1000;
constexpr int32_t SYSTEM_CALLER_PID = 50;
constexpr int32_t NATIVE_CALLER_PID = 51;
constexpr int32_t SHELL_CALLER_PID = 52;
constexpr int32_t SAMGR_PID = 10;

ProcessIdentity Identity(int32_t pid, int32_t uid, ATokenTypeEnum type, bool systemApp, const std::string& name)
{
    uint32_t token = AccessTokenKit::MakeTokenId(type, static_cast<uint32_t>(pid));
    return {pid, uid, token, TokenIdKit::MakeFullTokenId(token, systemApp), name};
}

// As it appears in the paths the service logs, which resolve links: canonical, no trailing '/'.
std::string AbsoluteDir(const std::string& dir)
{
    std::error_code failed;
    fs::path resolved = fs::canonical(dir, failed);
    if (failed) {
        resolved = fs::absolute(dir, failed).lexically_normal();
    }
    std::string absolute = resolved.string();
    while (absolute.size() > 1 && absolute.back() == '/') {
        absolute.pop_back();
    }
    return absolute;
}

std::string MakeTempDir()
{
    std::string pattern = (fs::temp_directory_path() / "zel_device.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        return {};
    }
    return pattern;
}
}  // namespace

Device::Device(DeviceSetup setup) : setup_(std::move(setup))
{
    PrepareDataDir();
    HiviewDFX::HiLogOutput::SetStderrEnabled(setup_.log);
    HiviewDFX::HiLogOutput::SetTimeSource([] { return PlatformClock::now().time_since_epoch().count(); });
    // The hooks hold the tap, not the device: a call still running in them when the device goes
    // finds it detached.
    tap_ = std::make_shared<DeviceTap>(trace_);
    HiviewDFX::HiLogOutput::AddSink(tap_);
    IPCTransport::Get().SetTransactionObserver(
        [tap = tap_](const TransactionRecord& record) { tap->OnTransaction(record); });

    samgrProcess_ =
        VirtualProcess::Create(Identity(SAMGR_PID, 1000, Security::AccessToken::TOKEN_NATIVE, false, "samgr"));
    {
        ScopedProcess scope(samgrProcess_);
        samgr_ = new DeviceServiceManager();
    }
    IPCSkeleton::SetContextObject(samgr_);
    systemCaller_ = VirtualProcess::Create(
        Identity(SYSTEM_CALLER_PID, 1000, Security::AccessToken::TOKEN_HAP, true, "system_caller"));
    nativeCaller_ = VirtualProcess::Create(
        Identity(NATIVE_CALLER_PID, 1000, Security::AccessToken::TOKEN_NATIVE, false, "native_caller"));
    shellCaller_ =
        VirtualProcess::Create(Identity(SHELL_CALLER_PID, 2000, Security::AccessToken::TOKEN_SHELL, false, "shell"));
    ConfigPolicy::SetConfigFolders({(fs::path(dataDir_) / "system").string()});
    services_ = std::make_unique<DeviceServices>(*this);
    std::string reason;
    if (!services_->Start(&reason)) {
        failure_ = "a system service could not start: " + reason;
    }
    if (!setup_.defaultConfig.empty() && fs::exists(setup_.defaultConfig)) {
        WriteConfig(setup_.defaultConfig, nullptr);
    }
}

void Device::PrepareDataDir()
{
    dataDir_ = setup_.dataDir;
    if (dataDir_.empty()) {
        dataDir_ = MakeTempDir();
        if (dataDir_.empty()) {
            failure_ = "no temporary data directory could be made";
            return;
        }
        removeDataDir_ = !setup_.keepDataDir;
    }
    std::error_code ignored;
    fs::create_directories(dataDir_, ignored);
    dataDir_ = AbsoluteDir(dataDir_);
    if (removeDataDir_) {
        RemoveOnInterrupt(dataDir_);
    }
    trace_.Hide(dataDir_, DATA_PLACEHOLDER);
}

Device::~Device()
{
    IPCTransport::Get().SetTransactionObserver(nullptr);
    HiviewDFX::HiLogOutput::RemoveSink(tap_);
    // Waits for the calls still inside the hooks; none reaches the trace after.
    tap_->Detach();
    if (removeDataDir_) {
        std::error_code ignored;
        fs::remove_all(dataDir_, ignored);
        KeepOnInterrupt(dataDir_);
    }
}

std::shared_ptr<VirtualProcess> Device::MakeServiceProcess(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    int32_t pid = nextServicePid_++;
    return VirtualProcess::Create(Identity(pid, 1000, Security::AccessToken::TOKEN_NATIVE, false, name));
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
        process = VirtualProcess::Create(
            Identity(pid, package->uid, Security::AccessToken::TOKEN_HAP, package->system, bundle));
    }
    return process;
}

void Device::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    samgr_->AddSystemAbility(id, object);
}

bool Device::WriteConfig(const std::string& source, std::string* error)
{
    fs::path target = fs::path(dataDir_) / "system" / CONFIG_RELATIVE_PATH;
    std::error_code code;
    fs::create_directories(target.parent_path(), code);
    fs::copy_file(source, target, fs::copy_options::overwrite_existing, code);
    if (code) {
        if (error != nullptr) {
            *error = "cannot use configuration " + Shown(source) + ": " + code.message();
        }
        return false;
    }
    return true;
}

bool Device::UseConfig(const std::optional<std::string>& path, std::string* error)
{
    if (!path) {
        std::error_code ignored;
        fs::remove(fs::path(dataDir_) / "system" / CONFIG_RELATIVE_PATH, ignored);
        return true;
    }
    fs::path source = *path;
    if (source.is_relative()) {
        source = fs::path(setup_.scenarioDir) / source;
    }
    if (!fs::exists(source)) {
        if (error != nullptr) {
            *error = "no such configuration file: " + Shown(source.string());
        }
        return false;
    }
    return WriteConfig(source.string(), error);
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
    serviceProcess_ = VirtualProcess::Create(
        Identity(SERVICE_PID, 1000, Security::AccessToken::TOKEN_NATIVE, false, "zel_manager_service"));
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
