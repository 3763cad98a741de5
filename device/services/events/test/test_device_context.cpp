#include "test_device_context.h"

#include <stdlib.h>

#include <filesystem>

#include "ipc_skeleton.h"

namespace Tarvo::Emu {

TestDeviceContext::TestDeviceContext()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zel_events_XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) {
        dataDir_ = pattern;
    }
    samgrProcess_ = MakeServiceProcess("samgr");
    ScopedProcess scope(samgrProcess_);
    registry_ = new SystemAbilityManager();
    IPCSkeleton::SetContextObject(registry_);
}

TestDeviceContext::~TestDeviceContext()
{
    IPCSkeleton::SetContextObject(nullptr);
    std::error_code ignored;
    if (!dataDir_.empty()) {
        std::filesystem::remove_all(dataDir_, ignored);
    }
}

std::shared_ptr<VirtualProcess> TestDeviceContext::MakeProcess(const std::string& name)
{
    int32_t pid = nextPid_++;
    return VirtualProcess::Create({pid, pid, 1u << 28, 1u << 28, name});
}

std::shared_ptr<VirtualProcess> TestDeviceContext::MakeServiceProcess(const std::string& name)
{
    return MakeProcess(name);
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
        process = VirtualProcess::Create({pid, package->uid, 0, 0, bundle});
    }
    return process;
}

void TestDeviceContext::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    registry_->AddSystemAbility(id, object);
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

}  // namespace Tarvo::Emu
