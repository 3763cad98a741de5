#include "process_device.h"

#include <unistd.h>

#include <filesystem>

#include "agent_stub.h"
#include "hilog.h"
#include "input_text.h"
#include "interrupt_cleanup.h"
#include "ipc_skeleton.h"
#include "ipc_types.h"
#include "platform_clock.h"
#include "program_files.h"
#include "sequencer.h"
#include "socket_transport.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {
using namespace DeviceLayout;
constexpr auto kAttachLimit = std::chrono::seconds(30);
constexpr auto kStopGrace = std::chrono::milliseconds(2000);
// The system services, in the order (and so with the pids) the in-process device starts them.
constexpr const char* kServiceRoles[] = {"app_manager",   "bundle_manager", "app_category", "component_scheduler",
                                         "render",        "display",        "power",        "params",
                                         "common_events", "settings"};

std::string CallerName(CallerSpec::Kind kind)
{
    switch (kind) {
        case CallerSpec::Kind::SYSTEM:
            return "system";
        case CallerSpec::Kind::SHELL:
            return "shell";
        default:
            return "native";
    }
}
}  // namespace

ProcessDevice::ProcessDevice(ProcessDeviceSetup setup)
    : setup_(std::move(setup)), data_(setup_.device.dataDir, setup_.device.keepDataDir)
{
    failure_ = data_.Failure();
    trace_.Hide(data_.Path(), Device::DATA_PLACEHOLDER);
    HiviewDFX::HiLogOutput::SetStderrEnabled(setup_.device.log);
    if (failure_.empty() && !Start()) {
        failure_ = failure_.empty() ? "the device's processes could not start" : failure_;
    }
}

bool ProcessDevice::Start()
{
    runPath_ = setup_.runDir;
    if (runPath_.empty()) {
        ownRunDir_ = RunDir::OpenTemporary(&failure_);
        if (ownRunDir_ == nullptr) {
            return false;
        }
        runPath_ = ownRunDir_->Path();
        RemoveOnInterrupt(runPath_);
    }
    if (!StartTime()) {
        return false;
    }
    executable_ = setup_.executable.empty() ? RunningExecutable() : setup_.executable;
    registry_ = std::make_unique<ProcessRegistry>(runPath_ + "/registry");
    const ProcessIdentity self = NativeIdentity(CONTROLLER_PID, "zel_device");
    if (!VirtualProcess::SetHostIdentity(self) || !IPCTransport::Install(new SocketTransport({runPath_})) ||
        !registry_->Register(getpid(), {self}, &failure_)) {
        return Fail(&failure_, failure_.empty() ? "the transport between processes could not be installed" : failure_);
    }
    static_cast<SocketTransport&>(IPCTransport::Get()).SetDeathsWhenTold(setup_.virtualTime);
    hub_ = new HubStub(trace_, [this](const std::string&, const sptr<IRemoteObject>& agent) { OnAttach(agent); });
    if (!static_cast<SocketTransport&>(IPCTransport::Get()).PublishNamed(kHubName, hub_)) {
        return Fail(&failure_, "the hub could not be published in " + runPath_);
    }
    if (!StartChild("samgr", "samgr", "", SamgrIdentity(), &failure_)) {
        return false;
    }
    for (const char* role : kServiceRoles) {
        if (!StartChild(role, role, "", NativeIdentity(nextServicePid_++, role), &failure_)) {
            return false;
        }
    }
    for (auto kind : {CallerSpec::Kind::SYSTEM, CallerSpec::Kind::NATIVE, CallerSpec::Kind::SHELL}) {
        if (!StartChild("caller " + CallerName(kind), "caller", CallerName(kind), CallerIdentity(kind), &failure_)) {
            return false;
        }
    }
    if (!setup_.device.defaultConfig.empty() && std::filesystem::exists(setup_.device.defaultConfig)) {
        UseConfigFile(data_.Path(), setup_.device.scenarioDir, setup_.device.defaultConfig, nullptr);
    }
    return true;
}

ProcessDevice::~ProcessDevice()
{
    if (setup_.virtualTime) {
        VirtualClock::SetFleet(nullptr);
    }
    ProcessLauncher::SetStopGrace(kStopGrace);
    // Each child goes with its handle; the controller's own entry last.
    children_.clear();
    if (registry_ != nullptr) {
        registry_->Unregister(getpid());
    }
    if (hub_ != nullptr) {
        static_cast<SocketTransport&>(IPCTransport::Get()).PublishNamed(kHubName, nullptr);
    }
    if (ownRunDir_ != nullptr) {
        ownRunDir_.reset();
        KeepOnInterrupt(runPath_);
    }
}

std::string ProcessDevice::RunPath() const
{
    return runPath_;
}

bool ProcessDevice::Fail(std::string* error, const std::string& reason) const
{
    if (error != nullptr) {
        *error = reason;
    }
    return false;
}

bool ProcessDevice::StartChild(const std::string& name, const std::string& role, const std::string& arg,
                               const ProcessIdentity& identity, std::string* error)
{
    LaunchPlan plan;
    plan.path = executable_;
    plan.argv = {executable_, "process", role};
    if (!arg.empty()) {
        plan.argv.push_back(arg);
    }
    plan.argv.insert(plan.argv.end(), {"--dir", runPath_, "--data", data_.Path()});
    if (setup_.device.log) {
        plan.argv.push_back("--log");
    }
    if (setup_.virtualTime) {
        plan.argv.push_back("--virtual-time");
    }
    plan.fds = {{STDOUT_FILENO, STDOUT_FILENO}, {STDERR_FILENO, STDERR_FILENO}};
    std::string refused;
    plan.registerChild = [this, &identity, &refused](pid_t realPid) {
        return registry_->Register(realPid, {identity}, &refused);
    };
    Child child{name, identity.pid, ProcessLauncher::Start(plan, error), nullptr};
    if (child.process == nullptr) {
        return Fail(error, refused.empty() ? *error : refused);
    }
    if (!AwaitAttach(child, error)) {
        return false;
    }
    children_[name] = std::move(child);
    return true;
}

void ProcessDevice::OnAttach(const sptr<IRemoteObject>& agent)
{
    const int32_t pid = IPCSkeleton::GetCallingPid();
    // A proxy replaced here goes after the lock: its release is a message to its process.
    sptr<IRemoteObject> replaced = agent;
    std::lock_guard<std::mutex> lock(attachMutex_);
    std::swap(agents_[pid], replaced);
    attached_.notify_all();
}

bool ProcessDevice::AwaitAttach(Child& child, std::string* error)
{
    // In virtual time its start takes turns, which a controller holding the baton would block.
    Sequencer::Yield yield;
    const auto deadline = std::chrono::steady_clock::now() + kAttachLimit;
    std::unique_lock<std::mutex> lock(attachMutex_);
    while (agents_.count(child.pid) == 0) {
        if (std::optional<ExitStatus> ended = child.process->Poll()) {
            return Fail(error, "process " + child.name + " ended as it started: " + ended->Describe());
        }
        if (std::chrono::steady_clock::now() > deadline) {
            return Fail(error, "process " + child.name + " did not attach");
        }
        attached_.wait_for(lock, std::chrono::milliseconds(20));
    }
    child.agent = std::move(agents_[child.pid]);
    agents_.erase(child.pid);
    return true;
}

ProcessDevice::Child* ProcessDevice::Find(const std::string& name)
{
    auto found = children_.find(name);
    return found != children_.end() ? &found->second : nullptr;
}

bool ProcessDevice::Control(const std::string& name, AgentControl control, std::string* error, AgentReply* reply)
{
    Child* child = Find(name);
    if (child == nullptr) {
        return Fail(error, "no process " + name);
    }
    MessageParcel data;
    MessageParcel answer;
    MessageOption option(MessageOption::TF_SYNC);
    AgentReply ignored;
    reply = reply != nullptr ? reply : &ignored;
    if (!WriteControl(control, data)) {
        return Fail(error, "a control for process " + name + " does not fit a parcel");
    }
    const int status = child->agent->SendRequest(static_cast<uint32_t>(control.code), data, answer, option);
    if (status != ERR_NONE || !ReadReply(answer, reply)) {
        return Fail(error, "process " + name + " did not take a control (status " + std::to_string(status) + ")");
    }
    return reply->ok || Fail(error, reply->error);
}

void ProcessDevice::ControlQuietly(const std::string& name, AgentControl control)
{
    std::string ignored;
    Control(name, std::move(control), &ignored);
}

std::string ProcessDevice::Failure() const
{
    if (!failure_.empty()) {
        return failure_;
    }
    for (const auto& [name, child] : children_) {
        if (std::optional<ExitStatus> ended = child.process->Poll()) {
            failure_ = "process " + name + " ended: " + ended->Describe();
            break;
        }
    }
    return failure_;
}

}  // namespace Tarvo::Emu
