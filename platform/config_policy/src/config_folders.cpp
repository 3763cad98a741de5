#include "config_folders.h"

#include <mutex>

namespace Tarvo::ConfigPolicy {
namespace {
struct Folders {
    std::mutex mutex;
    std::vector<std::string> list;
};

Folders& GetFolders()
{
    // Never destroyed: lookups may still run while statics are torn down.
    static auto* folders = new Folders();
    return *folders;
}
}  // namespace

void SetConfigFolders(std::vector<std::string> folders)
{
    Folders& state = GetFolders();
    std::lock_guard<std::mutex> lock(state.mutex);
    state.list = std::move(folders);
}

std::vector<std::string> GetConfigFolders()
{
    Folders& state = GetFolders();
    std::lock_guard<std::mutex> lock(state.mutex);
    return state.list;
}

}  // namespace Tarvo::ConfigPolicy
