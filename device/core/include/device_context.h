#ifndef ZEL_DEVICE_DEVICE_CONTEXT_H
#define ZEL_DEVICE_DEVICE_CONTEXT_H

#include <memory>
#include <string>

#include "iremote_object.h"
#include "package_catalog.h"
#include "trace.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

// What an emulated system service gets from the device it runs in.
class DeviceContext {
public:
    virtual ~DeviceContext() = default;

    virtual Trace& GetTrace() = 0;
    virtual PackageCatalog& Catalog() = 0;
    // A new native process for a system service; the device numbers the pids.
    virtual std::shared_ptr<VirtualProcess> MakeServiceProcess(const std::string& name) = 0;
    // The live process of an installed application, started on first use (a new one after it was
    // killed); null if the bundle is not installed.
    virtual std::shared_ptr<VirtualProcess> AppProcess(const std::string& bundle) = 0;
    // Makes the object obtainable from the service manager under the id.
    virtual void AddSystemAbility(int32_t id, const sptr<IRemoteObject>& object) = 0;
    // The run's data directory (settings database, parameters).
    virtual const std::string& DataDir() const = 0;

    // Makes a service process, creates the service's object inside it (so that the process owns
    // the object and handles its requests) and publishes it under the id.
    template <typename Object, typename... Args>
    sptr<Object> LaunchService(const std::string& processName, int32_t id, std::shared_ptr<VirtualProcess>& process,
                               Args&&... args)
    {
        process = MakeServiceProcess(processName);
        sptr<Object> object;
        {
            ScopedProcess scope(process);
            object = new Object(std::forward<Args>(args)...);
        }
        AddSystemAbility(id, object);
        return object;
    }
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_CONTEXT_H
