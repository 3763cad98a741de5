#ifndef ZEL_DEVICE_DEVICE_LAYOUT_H
#define ZEL_DEVICE_DEVICE_LAYOUT_H

// What every device has the same way, whether its processes are virtual or real: the emulated
// identities of its processes, its data directory and where the service finds its configuration.

#include <cstdint>
#include <optional>
#include <string>

#include "device_control.h"
#include "package_catalog.h"
#include "process_session.h"

namespace Tarvo::Emu {

namespace DeviceLayout {
constexpr int32_t SAMGR_PID = 10;
constexpr int32_t FIRST_SERVICE_PID = 100;
constexpr int32_t SYSTEM_CALLER_PID = 50;
constexpr int32_t NATIVE_CALLER_PID = 51;
constexpr int32_t SHELL_CALLER_PID = 52;
constexpr int32_t SERVICE_PID = 1000;
constexpr int32_t FIRST_APP_PID = 2000;
// Outside processes the device adopts (clients acting as a caller or an application).
constexpr int32_t FIRST_ADOPTED_PID = 900000;
constexpr const char* CONFIG_RELATIVE_PATH = "etc/zel_manager/zel_manager_config.xml";

// A native process of the system (uid 1000).
ProcessIdentity NativeIdentity(int32_t pid, const std::string& name);
ProcessIdentity SamgrIdentity();
ProcessIdentity ServiceIdentity();
// SYSTEM, NATIVE or SHELL; `pid` 0 is the device's own caller process of that kind.
ProcessIdentity CallerIdentity(CallerSpec::Kind kind, int32_t pid = 0);
ProcessIdentity AppIdentity(int32_t pid, const Package& package);
// The folder the configuration lookup starts from.
std::string ConfigFolder(const std::string& dataDir);
}  // namespace DeviceLayout

// The run's data directory: a fresh temporary one unless given (then kept), canonical, removed on
// an interrupt until released.
class DataDirectory {
public:
    DataDirectory(const std::string& given, bool keep);
    // Removes a temporary directory.
    ~DataDirectory();
    DataDirectory(const DataDirectory&) = delete;
    DataDirectory& operator=(const DataDirectory&) = delete;

    const std::string& Path() const { return path_; }
    // Why there is none; empty when there is one.
    const std::string& Failure() const { return failure_; }

private:
    std::string path_;
    bool remove_ = false;
    std::string failure_;
};

// The service finds `source` (relative to scenarioDir) as its configuration; nullopt: it finds none.
bool UseConfigFile(const std::string& dataDir, const std::string& scenarioDir, const std::optional<std::string>& source,
                   std::string* error);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_LAYOUT_H
