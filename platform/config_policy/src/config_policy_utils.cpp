#include "config_policy_utils.h"

#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "config_folders.h"

namespace {
std::string Join(const std::string& folder, const char* suffix)
{
    std::string path = folder;
    if (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    return path + (suffix[0] == '/' ? "" : "/") + suffix;
}

bool IsRegularFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}
}  // namespace

extern "C" char* GetOneCfgFile(const char* pathSuffix, char* buf, unsigned int bufLength)
{
    if (pathSuffix == nullptr || pathSuffix[0] == '\0' || buf == nullptr || bufLength == 0) {
        return nullptr;
    }
    std::vector<std::string> folders = Tarvo::ConfigPolicy::GetConfigFolders();
    for (auto it = folders.rbegin(); it != folders.rend(); ++it) {
        std::string path = Join(*it, pathSuffix);
        if (!IsRegularFile(path)) {
            continue;
        }
        // The best match decides: a lower-priority copy must never stand in for it.
        if (path.size() >= bufLength) {
            return nullptr;
        }
        std::memcpy(buf, path.c_str(), path.size() + 1);
        return buf;
    }
    return nullptr;
}
