#ifndef ZEL_DEVICE_CONFIG_CHECK_PARTS_H
#define ZEL_DEVICE_CONFIG_CHECK_PARTS_H

// The stages of the configuration check, each adding its findings in order.

#include <libxml/tree.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "config_check.h"

namespace Tarvo::Emu::ConfigCheckParts {

using Findings = std::vector<ConfigFinding>;

template <class T>
struct Stored {
    T value{};
    long line = 0;
};

// The service's three tables as its reader would leave them, each entry with the line it came from.
struct ReadTables {
    std::map<std::string, Stored<bool>> switches;
    std::map<std::string, Stored<std::vector<int32_t>>> numbers;
    std::map<std::string, Stored<bool>> scenes;  // name to interruptible
};

// What the service logs, quoted in findings.
std::string Logs(const std::string& message);

// The document as the service's reader gets it, or null (the file does not load; why is told).
xmlDocPtr ParseLikeTheService(const std::string& path, Findings* findings);
void ValidateAgainstSchema(xmlDocPtr doc, const std::string& schemaPath, Findings* findings);

// False when the root is not the service's: then nothing is read and the file does not load.
bool ReadLikeTheService(xmlDocPtr doc, ReadTables* tables, Findings* findings);

// What the service decides at start from the tables read, or when nothing loaded.
void TellStart(const ReadTables& tables, Findings* findings);
void TellStartWithoutConfig(Findings* findings);

}  // namespace Tarvo::Emu::ConfigCheckParts

#endif  // ZEL_DEVICE_CONFIG_CHECK_PARTS_H
