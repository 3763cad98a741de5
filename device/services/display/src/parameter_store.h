#ifndef ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_STORE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_STORE_H

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "trace.h"

namespace Tarvo::Emu {

// The parameters of the parameter service, in memory and in one file of "key=value" lines (no
// file when the path is empty). Every change rewrites the file whole, through a temporary file,
// so a crash never leaves half a file; nothing is written before Load(). Thread-safe.
class ParameterStore {
public:
    ParameterStore(std::string path, Trace& trace);

    // Adds the file's parameters that are not already set; lines without '=' or with an invalid
    // pair are skipped. A missing file is an empty one.
    void Load();
    // False, changing nothing, for an invalid pair. `traced`: a param.set event records the change.
    bool Set(const std::string& key, const std::string& value, bool traced);
    std::optional<std::string> Get(const std::string& key) const;

private:
    void SaveLocked() const;

    const std::string path_;
    Trace& trace_;
    mutable std::mutex mutex_;
    std::map<std::string, std::string> values_;
    bool loaded_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_PARAMETER_STORE_H
