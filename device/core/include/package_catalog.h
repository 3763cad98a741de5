#ifndef ZEL_DEVICE_PACKAGE_CATALOG_H
#define ZEL_DEVICE_PACKAGE_CATALOG_H

// The installed packages, behind every emulated service that answers about packages (bundle
// manager, app-category service, component scheduler, access tokens, application processes).

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tarvo::Emu {

struct Package {
    std::string bundle;
    int32_t uid = 0;
    bool game = false;            // the app-category service classes it as a game
    bool system = false;          // a system application
    std::optional<int32_t> type;  // what the component scheduler reports; unset: -1
};

class PackageCatalog {
public:
    static constexpr int32_t FIRST_UID = 20010000;
    static constexpr const char* DESKTOP = "com.tarvo.vistadeck";
    static constexpr const char* SYSTEM_UI = "com.tarvo.systemui";

    // With the desktop and the system UI installed, as on every device.
    PackageCatalog();

    // A uid of 0 takes the next free one (counting up from FIRST_UID and past every uid given). False
    // if the bundle is already installed, the uid is taken or the next one leaves the 32-bit range.
    bool Install(Package package, std::string* error);
    bool Remove(const std::string& bundle);
    std::optional<Package> FindByBundle(const std::string& bundle) const;
    std::optional<Package> FindByUid(int32_t uid) const;
    // In bundle order.
    std::vector<Package> All() const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, Package> packages_;
    int64_t nextUid_ = FIRST_UID;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PACKAGE_CATALOG_H
