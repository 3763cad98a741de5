#ifndef ZEL_DEVICE_CONFIG_CHECK_H
#define ZEL_DEVICE_CONFIG_CHECK_H

// What the service would make of a configuration file, told as findings a platform engineer can
// act on: the schema's complaints, what its reader stores (and where), what it ignores or rejects,
// and what the service then decides at start. The file is read and parsed as the service does
// (1 MiB at most, no document type declaration, no network, no entity substitution), so that
// "loads" here means the service's reader would return true.

#include <string>
#include <vector>

namespace Tarvo::Emu {

struct ConfigFinding {
    long line = 0;  // 0: the file as a whole, or an item it lacks
    std::string text;

    bool operator==(const ConfigFinding&) const = default;
};

struct ConfigCheck {
    bool loads = false;
    std::vector<ConfigFinding> findings;
};

// The schema shipped with the default configuration, beside the running executable.
std::string DefaultConfigSchema();

ConfigCheck CheckConfigFile(const std::string& path, const std::string& schemaPath = DefaultConfigSchema());

// "LINE: text", or "-: text" for the file as a whole.
std::string FormatFinding(const ConfigFinding& finding);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CONFIG_CHECK_H
