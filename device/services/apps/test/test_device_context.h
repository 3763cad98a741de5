#ifndef ZEL_DEVICE_APPS_TEST_TEST_DEVICE_CONTEXT_H
#define ZEL_DEVICE_APPS_TEST_TEST_DEVICE_CONTEXT_H

// A small device for the services' tests: numbered processes, a trace, a catalogue and a service
// manager of its own, installed as the driver's context object while it lives.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "device_context.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "system_ability_manager.h"

namespace Tarvo::Emu::Test {

class TestDeviceContext : public DeviceContext {
public:
    TestDeviceContext()
    {
        ScopedProcess scope(samgrProcess_);
        registry_ = new SystemAbilityManager();
        IPCSkeleton::SetContextObject(registry_);
    }
    ~TestDeviceContext() override { IPCSkeleton::SetContextObject(nullptr); }

    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) override
    {
        int32_t pid = nextPid_++;
        uint32_t nativeToken = (1u << 28) | static_cast<uint32_t>(pid);
        return Keep(VirtualProcess::Create({pid, 1000, nativeToken, nativeToken, name}));
    }
    std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) override
    {
        std::optional<Package> package = catalog_.FindByBundle(bundle);
        if (!package) {
            return nullptr;
        }
        std::shared_ptr<VirtualProcess>& process = apps_[bundle];
        if (process == nullptr || !process->IsAlive()) {
            int32_t pid = nextPid_++;
            process = Keep(VirtualProcess::Create({pid, package->uid, static_cast<uint32_t>(pid), 0, bundle}));
        }
        return process;
    }
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override
    {
        registry_->AddSystemAbility(id, object);
    }
    const std::string& DataDir() const override { return dataDir_; }

    // The ability as `process` obtains it from the service manager.
    sptr<IRemoteObject> Obtain(int32_t id, const std::shared_ptr<VirtualProcess>& process)
    {
        ScopedProcess scope(process);
        sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        return samgr != nullptr ? samgr->GetSystemAbility(id) : nullptr;
    }

private:
    std::shared_ptr<VirtualProcess> Keep(std::shared_ptr<VirtualProcess> process)
    {
        processes_.push_back(process);
        return process;
    }

    std::vector<std::shared_ptr<VirtualProcess>> processes_;
    std::shared_ptr<VirtualProcess> samgrProcess_ = VirtualProcess::Create({10, 1000, 1u << 28, 1u << 28, "samgr"});
    sptr<SystemAbilityManager> registry_;
    Trace trace_;
    PackageCatalog catalog_;
    std::map<std::string, std::shared_ptr<VirtualProcess>> apps_;
    int32_t nextPid_ = 100;
    std::string dataDir_ = "/nonexistent";
};

}  // namespace Tarvo::Emu::Test

#endif  // ZEL_DEVICE_APPS_TEST_TEST_DEVICE_CONTEXT_H
