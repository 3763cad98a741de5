#include "package_catalog.h"

namespace Tarvo::Emu {

PackageCatalog::PackageCatalog()
{
    Install({DESKTOP, 0, false, true, std::nullopt}, nullptr);
    Install({SYSTEM_UI, 0, false, true, std::nullopt}, nullptr);
}

bool PackageCatalog::Install(Package package, std::string* error)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (packages_.count(package.bundle) != 0) {
        if (error != nullptr) {
            *error = "package " + package.bundle + " is already installed";
        }
        return false;
    }
    if (package.uid == 0) {
        package.uid = nextUid_;
    }
    for (const auto& [bundle, installed] : packages_) {
        if (installed.uid == package.uid) {
            if (error != nullptr) {
                *error = "uid " + std::to_string(package.uid) + " is taken by " + bundle;
            }
            return false;
        }
    }
    if (package.uid >= nextUid_) {
        nextUid_ = package.uid + 1;
    }
    packages_.emplace(package.bundle, std::move(package));
    return true;
}

bool PackageCatalog::Remove(const std::string& bundle)
{
    std::lock_guard<std::mutex> lock(mutex_);
    return packages_.erase(bundle) != 0;
}

std::optional<Package> PackageCatalog::FindByBundle(const std::string& bundle) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = packages_.find(bundle);
    if (it == packages_.end()) {
        return std::nullopt;
    }
    return it->second;
}

std::optional<Package> PackageCatalog::FindByUid(int32_t uid) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& [bundle, package] : packages_) {
        if (package.uid == uid) {
            return package;
        }
    }
    return std::nullopt;
}

std::vector<Package> PackageCatalog::All() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Package> all;
    for (const auto& [bundle, package] : packages_) {
        all.push_back(package);
    }
    return all;
}

}  // namespace Tarvo::Emu
