#include "package_catalog.h"

#include <algorithm>
#include <limits>

#include "input_text.h"

namespace Tarvo::Emu {

PackageCatalog::PackageCatalog()
{
    Install({DESKTOP, 0, false, true, std::nullopt}, nullptr);
    Install({SYSTEM_UI, 0, false, true, std::nullopt}, nullptr);
}

namespace {
bool Refuse(std::string* error, std::string reason)
{
    if (error != nullptr) {
        *error = std::move(reason);
    }
    return false;
}
}  // namespace

bool PackageCatalog::Install(Package package, std::string* error)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (packages_.count(package.bundle) != 0) {
        return Refuse(error, "package " + Shown(package.bundle) + " is already installed");
    }
    if (package.uid == 0) {
        if (nextUid_ > std::numeric_limits<int32_t>::max()) {
            return Refuse(error, "the next uid, " + std::to_string(nextUid_) + ", is beyond the 32-bit range");
        }
        package.uid = static_cast<int32_t>(nextUid_);
    }
    for (const auto& [bundle, installed] : packages_) {
        if (installed.uid == package.uid) {
            return Refuse(error, "uid " + std::to_string(package.uid) + " is taken by " + Shown(bundle));
        }
    }
    nextUid_ = std::max<int64_t>(nextUid_, int64_t{package.uid} + 1);
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
