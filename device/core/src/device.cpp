#include "device.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "access_token_kit.h"
#include "config_folders.h"
#include "device_services.h"
#include "hilog.h"
#include "ipc_driver.h"
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

std::string MakeTempDir()
{
    std::string pattern = (fs::temp_directory_path() / "zel_device.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        return {};
    }
    return pattern;
}
}  // namespace

// Traces the service's own lines: its domain, from its process (libraries there log under theirs).
class Device::LogTracer : public HiviewDFX::LogSink {
public:
    explicit LogTracer(Trace& trace) : trace_(trace) {}
    void SetPid(int32_t pid) { pid_ = pid; }
    void OnLog(const HiviewDFX::LogRecord& record) override
    {
        if (pid_ != 0 && record.pid == pid_ && record.domain == Vantel::ZEL_LOG_LABEL.domain) {
            trace_.Emit("log", {{"level", std::string(1, HiviewDFX::LevelLetter(record.level))},
                                {"msg", record.message}});
        }
    }

private:
    Trace& trace_;
    std::atomic<int32_t> pid_{0};
};

Device::Device(DeviceSetup setup) : setup_(std::move(setup))
{
    dataDir_ = setup_.dataDir;
    if (dataDir_.empty()) {
        dataDir_ = MakeTempDir();
        removeDataDir_ = !setup_.keepDataDir;
    }
    std::error_code ignored;
    fs::create_directories(dataDir_, ignored);
    HiviewDFX::HiLogOutput::SetStderrEnabled(setup_.log);
    HiviewDFX::HiLogOutput::SetTimeSource([] { return PlatformClock::now().time_since_epoch().count(); });
    logTracer_ = std::make_shared<LogTracer>(trace_);
    HiviewDFX::HiLogOutput::AddSink(logTracer_);
    TraceTransactions();

    samgrProcess_ = VirtualProcess::Create(Identity(SAMGR_PID, 1000, Security::AccessToken::TOKEN_NATIVE, false, "samgr"));
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

Device::~Device()
{
    IPCDriver::GetInstance().SetTransactionObserver(nullptr);
    HiviewDFX::HiLogOutput::RemoveSink(logTracer_);
    if (removeDataDir_) {
        std::error_code ignored;
        fs::remove_all(dataDir_, ignored);
    }
}

void Device::TraceTransactions()
{
    IPCDriver::GetInstance().SetTransactionObserver([this](const TransactionRecord& record) {
        if (record.tag == 0 || record.descriptor != Vantel::IZelManager::GetDescriptor()) {
            return;
        }
        TraceValue reply = nullptr;
        if (record.reply != nullptr && record.reply->GetDataSize() >= sizeof(uint32_t)) {
            MessageParcel copy = *record.reply;
            uint32_t raw = copy.ReadUint32();
            reply = record.code == 1 ? static_cast<int64_t>(static_cast<int32_t>(raw)) : static_cast<int64_t>(raw);
        }
        trace_.Emit("ipc.done", {{"line", static_cast<int64_t>(record.tag)},
                                 {"code", static_cast<int64_t>(record.code)},
                                 {"status", static_cast<int64_t>(record.status)},
                                 {"reply", reply}});
    });
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
        process = VirtualProcess::Create(Identity(pid, package->uid, Security::AccessToken::TOKEN_HAP, package->system, bundle));
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
            *error = "cannot use configuration " + source + ": " + code.message();
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
            *error = "no such configuration file: " + source.string();
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
            *error = "cannot write setting " + key;
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
    logTracer_->SetPid(SERVICE_PID);
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

std::string Device::Failure() const
{
    return failure_;
}

}  // namespace Tarvo::Emu
