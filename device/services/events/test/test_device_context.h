#ifndef ZEL_DEVICE_EVENTS_TEST_DEVICE_CONTEXT_H
#define ZEL_DEVICE_EVENTS_TEST_DEVICE_CONTEXT_H

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "device_context.h"
#include "system_ability_manager.h"

namespace Tarvo::Emu {

// A device context for service tests: a service manager of its own (installed as the context
// object), a trace, a catalogue and a fresh data directory removed at the end.
class TestDeviceContext : public DeviceContext {
public:
    TestDeviceContext();
    ~TestDeviceContext() override;

    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) override;
    std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) override;
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override;
    const std::string& DataDir() const override { return dataDir_; }

    // Any other process (a client, a publisher).
    std::shared_ptr<VirtualProcess> MakeProcess(const std::string& name);
    // The events of one kind traced so far.
    std::vector<TraceEvent> EventsOf(const std::string& ev) const;

private:
    Trace trace_;
    PackageCatalog catalog_;
    std::string dataDir_;
    std::atomic<int32_t> nextPid_{100};
    std::shared_ptr<VirtualProcess> samgrProcess_;
    sptr<SystemAbilityManager> registry_;
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<VirtualProcess>> apps_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_EVENTS_TEST_DEVICE_CONTEXT_H
