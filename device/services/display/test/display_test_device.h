#ifndef ZEL_DEVICE_SERVICES_DISPLAY_TEST_DISPLAY_TEST_DEVICE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_TEST_DISPLAY_TEST_DEVICE_H

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device_context.h"
#include "system_ability_manager.h"

namespace Tarvo::Emu::Test {

// Just enough device for the display services: a service manager installed as the context object,
// native service processes, a trace and a data directory (a new temporary one unless given; only a
// temporary one is removed at the end).
class DisplayTestDevice : public DeviceContext {
public:
    explicit DisplayTestDevice(std::string dataDir = std::string());
    ~DisplayTestDevice() override;

    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) override;
    std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) override;
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override;
    const std::string& DataDir() const override { return dataDir_; }

    // A process for a client of the services (another native process).
    std::shared_ptr<VirtualProcess> MakeClientProcess(const std::string& name);
    // The latest process made under that name; null if none.
    std::shared_ptr<VirtualProcess> FindProcess(const std::string& name);
    // Every traced event as its JSON line.
    std::vector<std::string> TraceLines() const;

private:
    std::shared_ptr<VirtualProcess> MakeProcess(const std::string& name);

    Trace trace_;
    PackageCatalog catalog_;
    std::string dataDir_;
    bool removeDataDir_ = false;
    std::atomic<int32_t> nextPid_{100};
    std::shared_ptr<VirtualProcess> samgrProcess_;
    sptr<SystemAbilityManager> samgr_;
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<VirtualProcess>> byName_;
};

}  // namespace Tarvo::Emu::Test

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_TEST_DISPLAY_TEST_DEVICE_H
