#include "device_process.h"

#include <unistd.h>

#include <condition_variable>
#include <map>
#include <mutex>

#include "agent_stub.h"
#include "config_folders.h"
#include "device_context.h"
#include "device_layout.h"
#include "device_service_manager.h"
#include "device_services.h"
#include "device_tap.h"
#include "game_callback.h"
#include "hilog.h"
#include "interrupt_cleanup.h"
#include "ipc_skeleton.h"
#include "ipc_types.h"
#include "iservice_registry.h"
#include "process_registry.h"
#include "run_dir.h"
#include "sequencer.h"
#include "service_host.h"
#include "shared_time_page.h"
#include "socket_transport.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {
// What a proxy is once its owner has died: every request fails as the transport fails it.
class DeadRemote : public IRemoteObject {
public:
    explicit DeadRemote(std::u16string descriptor) : IRemoteObject(std::move(descriptor)) {}
    int SendRequest(uint32_t, MessageParcel&, MessageParcel&, MessageOption&) override { return ERR_DEAD_OBJECT; }
    bool IsProxyObject() const override { return true; }
    bool IsObjectDead() const override { return true; }
    bool AddDeathRecipient(const sptr<DeathRecipient>&) override { return false; }
    bool RemoveDeathRecipient(const sptr<DeathRecipient>&) override { return false; }
};

struct ProcessArgs {
    std::string role;
    std::string arg;
    std::string runDir;
    std::string dataDir;
    bool log = false;
    bool virtualTime = false;
};

bool ParseArgs(const std::vector<std::string>& args, ProcessArgs* parsed)
{
    std::vector<std::string> words;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--log") {
            parsed->log = true;
        } else if (args[i] == "--virtual-time") {
            parsed->virtualTime = true;
        } else if ((args[i] == "--dir" || args[i] == "--data") && i + 1 < args.size()) {
            std::string& value = args[i] == "--dir" ? parsed->runDir : parsed->dataDir;
            value = args[++i];
        } else {
            words.push_back(args[i]);
        }
    }
    if (words.empty() || words.size() > 2 || parsed->runDir.empty() || parsed->dataDir.empty()) {
        return false;
    }
    parsed->role = words[0];
    parsed->arg = words.size() > 1 ? words[1] : "";
    return true;
}

// Wakes the main thread when the controller goes.
class Farewell : public IRemoteObject::DeathRecipient {
public:
    void OnRemoteDied(const wptr<IRemoteObject>&) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        gone_ = true;
        changed_.notify_all();
    }
    void Wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return gone_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool gone_ = false;
};

// What one process of the device is, and how it answers controls.
class DeviceProcess : public DeviceContext {
public:
    explicit DeviceProcess(ProcessArgs args) : args_(std::move(args)), services_(*this) {}

    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    // A process of its own: the services of this process are the process.
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string&) override { return VirtualProcess::Host(); }
    std::shared_ptr<VirtualProcess> AppProcess(const std::string&) override { return nullptr; }
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override;
    const std::string& DataDir() const override { return args_.dataDir; }

    bool Build(std::string* error);
    bool Attach(const sptr<IRemoteObject>& hub, std::string* error);
    void Handle(const AgentControl& control, AgentReply* reply);

private:
    bool StartService(std::string* error);
    void HandleService(const AgentControl& control, AgentReply* reply);
    void Send(const AgentControl& control, AgentReply* reply);

    const ProcessArgs args_;
    ForwardingTrace trace_;
    PackageCatalog catalog_;
    DeviceServices services_;
    std::shared_ptr<DeviceTap> tap_;
    sptr<DeviceServiceManager> samgr_;
    std::unique_ptr<ServiceHost> host_;
    std::mutex mutex_;
    std::vector<sptr<GameCallback>> callbacks_;
};

void DeviceProcess::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    sptr<ISystemAbilityManager> manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (manager != nullptr) {
        manager->AddSystemAbility(id, object);
    }
}

bool DeviceProcess::StartService(std::string* error)
{
    const std::map<std::string, std::function<void()>> starts = {
        {"app_manager", [this] { services_.appManager->Start(); }},
        {"bundle_manager", [this] { services_.bundleManager->Start(); }},
        {"app_category", [this] { services_.category->Start(); }},
        {"component_scheduler", [this] { services_.scheduler->Start(); }},
        {"render", [this] { services_.render->Start(); }},
        {"display", [this] { services_.display->Start(); }},
        {"power", [this] { services_.power->Start(); }},
        {"params", [this] { services_.params->Start(); }},
        {"common_events", [this] { services_.commonEvents->Start(); }},
    };
    if (args_.role == "settings") {
        return services_.settings->Start(error);
    }
    auto start = starts.find(args_.role);
    if (start == starts.end()) {
        *error = "unknown role " + args_.role;
        return false;
    }
    start->second();
    return true;
}

bool DeviceProcess::Build(std::string* error)
{
    ConfigPolicy::SetConfigFolders({DeviceLayout::ConfigFolder(args_.dataDir)});
    tap_ = std::make_shared<DeviceTap>(trace_);
    HiviewDFX::HiLogOutput::AddSink(tap_);
    IPCTransport::Get().SetTransactionObserver(
        [tap = tap_](const TransactionRecord& record) { tap->OnTransaction(record); });
    if (args_.role == "samgr") {
        samgr_ = new DeviceServiceManager();
        return IPCSkeleton::SetContextObject(samgr_) || (*error = "cannot publish the service manager", false);
    }
    if (args_.role == "host") {
        tap_->SetServicePid(VirtualProcess::Host()->Pid());
        return true;
    }
    if (args_.role == "caller" || args_.role == "app") {
        return true;
    }
    return StartService(error);
}

bool DeviceProcess::Attach(const sptr<IRemoteObject>& hub, std::string* error)
{
    trace_.SetHub(hub);
    sptr<IRemoteObject> agent =
        new AgentStub([this](const AgentControl& control, AgentReply* reply) { Handle(control, reply); });
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    if (!data.WriteInterfaceToken(kHubDescriptor) || !data.WriteString(args_.role) || !data.WriteRemoteObject(agent) ||
        hub->SendRequest(static_cast<uint32_t>(HubCode::ATTACH), data, reply, option) != 0) {
        *error = "cannot attach to the controller";
        return false;
    }
    return true;
}

void DeviceProcess::Send(const AgentControl& control, AgentReply* reply)
{
    IPCTransport::ScopedTag tag(static_cast<uint64_t>(control.order.line));
    sptr<IRemoteObject> callback;
    if (control.order.kind == RequestOrder::Kind::REGISTER) {
        sptr<GameCallback> made = new GameCallback(tap_, args_.arg, control.order.name);
        {
            std::lock_guard<std::mutex> lock(mutex_);
            callbacks_.push_back(made);
        }
        callback = made->AsObject();
        reply->object = callback;
    }
    const bool toCallback = control.order.kind == RequestOrder::Kind::RAW && !control.order.raw.bundle.empty();
    sptr<IRemoteObject> target = toCallback ? control.object : LookUpService();
    if (toCallback && target == nullptr) {
        // The device sends no object only for a callback whose process died (a dead proxy cannot
        // travel): what this process would hold then is a dead proxy.
        target = new DeadRemote(Vantel::IZelCallbackInterface::GetDescriptor());
    }
    reply->outcome = SendOrder(control.order, target, callback);
}

void DeviceProcess::HandleService(const AgentControl& control, AgentReply* reply)
{
    switch (control.code) {
        case AgentCode::PRESET_PARAM:
            services_.params->Preset(control.key, control.value);
            break;
        case AgentCode::PRESET_SETTING:
            reply->ok = services_.settings->Preset(control.key, control.value);
            break;
        case AgentCode::SET_UP:
            if (samgr_ != nullptr) {
                IPCSkeleton::SetContextObject(control.flag ? sptr<IRemoteObject>(samgr_) : nullptr);
            } else if (args_.role == "settings") {
                services_.settings->SetUp(control.flag);
            } else {
                services_.category->SetUp(control.flag);
            }
            break;
        case AgentCode::ABILITY:
            if (samgr_ != nullptr) {
                samgr_->SetObtainable(control.id, control.flag);
            }
            break;
        case AgentCode::PUBLISH:
            services_.commonEvents->Publish(control.key, control.bundle, control.number);
            break;
        case AgentCode::APP_STATE:
            services_.appManager->NotifyAppState(control.key, control.id, control.state, control.flag);
            break;
        case AgentCode::LIGHT:
            services_.power->Light(static_cast<uint32_t>(control.id), control.flag);
            break;
        default:
            reply->ok = false;
            reply->error = "not a control of this process";
    }
}

void DeviceProcess::Handle(const AgentControl& control, AgentReply* reply)
{
    switch (control.code) {
        case AgentCode::INSTALL:
            catalog_.Install(control.package, nullptr);
            return;
        case AgentCode::REMOVE:
            catalog_.Remove(control.key);
            return;
        case AgentCode::FAULT:
            IPCTransport::Get().SetTransportFault(control.id, control.flag);
            return;
        case AgentCode::NEXT_DUE:
            if (std::optional<PlatformClock::time_point> due = VirtualClock::NextDueHere()) {
                reply->due = std::chrono::duration_cast<std::chrono::milliseconds>(due->time_since_epoch()).count();
            }
            return;
        case AgentCode::MOVE:
            VirtualClock::MoveHere(PlatformClock::time_point(std::chrono::milliseconds(control.time)));
            return;
        case AgentCode::DEATH:
            static_cast<SocketTransport&>(IPCTransport::Get()).PeerDied(control.id);
            return;
        case AgentCode::WATCH:
            tap_->Watch(static_cast<uint64_t>(control.order.line), control.order.TargetDescriptor(),
                        VirtualProcess::Host()->Pid(), args_.arg);
            return;
        case AgentCode::SEND:
            return Send(control, reply);
        case AgentCode::BOOT:
            host_ = std::make_unique<ServiceHost>(VirtualProcess::Host());
            if (!host_->LoadLibrary(args_.arg, &reply->error)) {
                reply->ok = false;
                return;
            }
            host_->StartAbilities();
            return;
        case AgentCode::SHUTDOWN:
            if (host_ != nullptr) {
                host_->StopAbilities();
            }
            return;
        default:
            return HandleService(control, reply);
    }
}
}  // namespace

int RunDeviceProcess(const std::vector<std::string>& args)
{
    ProcessArgs parsed;
    if (!ParseArgs(args, &parsed)) {
        fprintf(stderr, "zel_device process: usage: ROLE [ARG] --dir RUNDIR --data DIR [--log] [--virtual-time]\n");
        return 2;
    }
    // The device's work count, and in virtual time its clock and turns too.
    std::string error;
    const std::string page = RunDir::TimePagePath(parsed.runDir);
    if (parsed.virtualTime ? !VirtualClock::InstallShared(page, error) : !SharedTimePage::Attach(page, error)) {
        fprintf(stderr, "zel_device process %s: %s\n", parsed.role.c_str(), error.c_str());
        return 1;
    }
    std::vector<ProcessIdentity> identities = ProcessRegistry(parsed.runDir + "/registry").IdentitiesOf(getpid());
    if (identities.size() != 1 || !VirtualProcess::SetHostIdentity(identities.front()) ||
        !IPCTransport::Install(new SocketTransport({parsed.runDir}))) {
        fprintf(stderr, "zel_device process %s: no identity of its own\n", parsed.role.c_str());
        return 1;
    }
    static_cast<SocketTransport&>(IPCTransport::Get()).SetDeathsWhenTold(parsed.virtualTime);
    HiviewDFX::HiLogOutput::SetStderrEnabled(parsed.log);
    // Told to stop: nothing of its own to clean up, the controller removes the run folder.
    OnInterrupt([](int) { _exit(0); });
    // Lives until the process ends: its threads may be anywhere when the controller goes.
    auto* process = new DeviceProcess(parsed);
    sptr<Farewell> farewell = new Farewell();
    {
        // What starting posts is posted in the same order on every run.
        Sequencer::Hold hold;
        sptr<IRemoteObject> hub = static_cast<SocketTransport&>(IPCTransport::Get()).GetNamed(kHubName);
        if (hub == nullptr || !hub->AddDeathRecipient(farewell) || !process->Build(&error) ||
            !process->Attach(hub, &error)) {
            fprintf(stderr, "zel_device process %s: %s\n", parsed.role.c_str(),
                    error.empty() ? "the controller cannot be reached" : error.c_str());
            return 1;
        }
    }
    farewell->Wait();
    return 0;
}

}  // namespace Tarvo::Emu
