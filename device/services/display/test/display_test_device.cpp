#include "display_test_device.h"

#include <stdlib.h>

#include <filesystem>

#include "ipc_skeleton.h"

namespace Tarvo::Emu::Test {

DisplayTestDevice::DisplayTestDevice(std::string dataDir) : dataDir_(std::move(dataDir))
{
    if (dataDir_.empty()) {
        char pattern[] = "/tmp/zel_display_test.XXXXXX";
        if (mkdtemp(pattern) != nullptr) {
            dataDir_ = pattern;
            removeDataDir_ = true;
        }
    }
    samgrProcess_ = MakeProcess("samgr");
    {
        ScopedProcess scope(samgrProcess_);
        samgr_ = new SystemAbilityManager();
    }
    IPCSkeleton::SetContextObject(samgr_);
}

DisplayTestDevice::~DisplayTestDevice()
{
    IPCSkeleton::SetContextObject(nullptr);
    if (removeDataDir_) {
        std::error_code ignored;
        std::filesystem::remove_all(dataDir_, ignored);
    }
}

std::shared_ptr<VirtualProcess> DisplayTestDevice::MakeProcess(const std::string& name)
{
    int32_t pid = nextPid_++;
    // Native token type (1) in bits 28-29.
    uint32_t token = (1u << 28) | static_cast<uint32_t>(pid);
    auto process = VirtualProcess::Create({pid, 1000, token, token, name});
    std::lock_guard<std::mutex> lock(mutex_);
    byName_[name] = process;
    return process;
}

std::shared_ptr<VirtualProcess> DisplayTestDevice::FindProcess(const std::string& name)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = byName_.find(name);
    return it != byName_.end() ? it->second : nullptr;
}

std::shared_ptr<VirtualProcess> DisplayTestDevice::MakeServiceProcess(const std::string& name)
{
    return MakeProcess(name);
}

std::shared_ptr<VirtualProcess> DisplayTestDevice::MakeClientProcess(const std::string& name)
{
    return MakeProcess(name);
}

// The display services never act for an application.
std::shared_ptr<VirtualProcess> DisplayTestDevice::AppProcess(const std::string&)
{
    return nullptr;
}

void DisplayTestDevice::AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object)
{
    samgr_->AddSystemAbility(id, object);
}

std::vector<std::string> DisplayTestDevice::TraceLines() const
{
    std::vector<std::string> lines;
    for (const auto& event : trace_.EventsSince(0)) {
        lines.push_back(event.Json());
    }
    return lines;
}

}  // namespace Tarvo::Emu::Test
