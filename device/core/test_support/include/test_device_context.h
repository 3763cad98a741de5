#ifndef ZEL_DEVICE_TEST_SUPPORT_TEST_DEVICE_CONTEXT_H
#define ZEL_DEVICE_TEST_SUPPORT_TEST_DEVICE_CONTEXT_H

// Just enough device for the system services' tests: a trace, a catalogue, numbered processes and
// a service manager of its own, installed as the driver's context object while the context lives.

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device_context.h"
#include "platform_test_support.h"

namespace Tarvo::Emu::Test {

class TestDeviceContext : public DeviceContext {
public:
    // VIRTUAL: virtual time from the start, so that traced events carry exact times.
    enum class Clock { STEADY, VIRTUAL };

    // A given data directory is kept at the end; without one, a new temporary one is removed.
    explicit TestDeviceContext(Clock clock = Clock::STEADY, const std::string& dataDir = std::string());
    ~TestDeviceContext() override;

    Trace& GetTrace() override { return trace_; }
    PackageCatalog& Catalog() override { return catalog_; }
    std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) override;
    std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) override;
    void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) override;
    const std::string& DataDir() const override { return dataDir_; }

    // A native process for a client of the services.
    std::shared_ptr<VirtualProcess> MakeClientProcess(const std::string& name);
    // The latest process made under that name; null if none.
    std::shared_ptr<VirtualProcess> FindProcess(const std::string& name);
    // The ability as `process` obtains it from the service manager.
    sptr<IRemoteObject> Obtain(int32_t id, const std::shared_ptr<VirtualProcess>& process);

    // The events of one kind traced so far.
    std::vector<TraceEvent> EventsOf(const std::string& ev) const;
    // Every traced event as its JSON line.
    std::vector<std::string> TraceLines() const;

private:
    std::shared_ptr<VirtualProcess> Keep(std::shared_ptr<VirtualProcess> process);

    Trace trace_;
    PackageCatalog catalog_;
    std::string dataDir_;
    bool removeDataDir_ = false;
    Tarvo::Test::ScopedServiceManager samgr_;
    std::mutex mutex_;
    int32_t nextPid_ = 100;
    // Every process made lives as long as the context: a stub dies with its owner.
    std::vector<std::shared_ptr<VirtualProcess>> processes_;
    std::map<std::string, std::shared_ptr<VirtualProcess>> apps_;
};

}  // namespace Tarvo::Emu::Test

#endif  // ZEL_DEVICE_TEST_SUPPORT_TEST_DEVICE_CONTEXT_H
