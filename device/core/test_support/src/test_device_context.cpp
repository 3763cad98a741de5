#include "test_device_context.h"

#include <stdlib.h>

#include <filesystem>

#include "iservice_registry.h"
#include "virtual_clock.h"

namespace Tarvo::Emu::Test {
namespace {
using Security::AccessToken::TOKEN_HAP;
using Security::AccessToken::TOKEN_NATIVE;

constexpr int32_t SAMGR_PID = 10;
constexpr int32_t SYSTEM_UID = 1000;

std::string MakeTempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zel_device_test.XXXXXX").string();
    return mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
}

}  // namespace

TestDeviceContext::TestDeviceContext(Clock clock, const std::string& dataDir)
    : dataDir_(dataDir.empty() ? MakeTempDir() : dataDir),
      removeDataDir_(dataDir.empty() && !dataDir_.empty()),
      samgr_(VirtualProcess::Create(Tarvo::Test::MakeIdentity(SAMGR_PID, SYSTEM_UID, TOKEN_NATIVE, false, "samgr")))
{
    // Before the services under test exist.
    if (clock == Clock::VIRTUAL) {
        VirtualClock::Install();
    }
}

TestDeviceContext::~TestDeviceContext()
{
    // Before the processes it keeps go.
    samgr_.Uninstall();
    if (removeDataDir_) {
        std::error_code ignored;
        std::filesystem::remove_all(dataDir_, ignored);
    }
}

std::shared_ptr<VirtualProcess> TestDeviceContext::Keep(std::shared_ptr<VirtualProcess> process)
{
    processes_.push_back(process);
    return process;
}

std::shared_ptr<VirtualProcess> TestDeviceContext::MakeServiceProcess(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    int32_t pid = nextPid_++;
    return Keep(VirtualProcess::Create(Tarvo::Test::MakeIdentity(pid, SYSTEM_UID, TOKEN_NATIVE, false, name)));
}

std::shared_ptr<VirtualProcess> TestDeviceContext::MakeClientProcess(const std::string& name)
{
    return MakeServiceProcess(name);
}

std::shared_ptr<VirtualProcess> TestDeviceContext::AppProcess(const std::string& bundle)
{
    std::optional<Package> package = catalog_.FindByBundle(bundle);
    if (!package.has_value()) {
        return nullptr;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    std::shared_ptr<VirtualProcess>& process = apps_[bundle];
    if (process == nullptr || !process->IsAlive()) {
        int32_t pid = nextPid_++;
        process = Keep(
            VirtualProcess::Create(Tarvo::Test::MakeIdentity(pid, package->uid, TOKEN_HAP, package->system, bundle)));
    }
    return process;
}

void TestDeviceContext::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    samgr_->AddSystemAbility(id, object);
}

std::shared_ptr<VirtualProcess> TestDeviceContext::FindProcess(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = processes_.rbegin(); it != processes_.rend(); ++it) {
        if ((*it)->Name() == name) {
            return *it;
        }
    }
    return nullptr;
}

sptr<IRemoteObject> TestDeviceContext::Obtain(int32_t id, const std::shared_ptr<VirtualProcess>& process)
{
    ScopedProcess scope(process);
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    return samgr != nullptr ? samgr->GetSystemAbility(id) : nullptr;
}

std::vector<TraceEvent> TestDeviceContext::EventsOf(const std::string& ev) const
{
    std::vector<TraceEvent> found;
    for (TraceEvent& event : trace_.EventsSince(0)) {
        if (event.ev == ev) {
            found.push_back(std::move(event));
        }
    }
    return found;
}

std::vector<std::string> TestDeviceContext::TraceLines() const
{
    std::vector<std::string> lines;
    for (const TraceEvent& event : trace_.EventsSince(0)) {
        lines.push_back(event.Json());
    }
    return lines;
}

}  // namespace Tarvo::Emu::Test
