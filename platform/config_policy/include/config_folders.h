#ifndef TARVO_CONFIG_POLICY_CONFIG_FOLDERS_H
#define TARVO_CONFIG_POLICY_CONFIG_FOLDERS_H

// The configuration folders of the platform, lowest priority first. Set by whoever runs the
// platform (the device, a test); empty until then. Thread-safe.

#include <string>
#include <vector>

namespace Tarvo::ConfigPolicy {

void SetConfigFolders(std::vector<std::string> folders);
std::vector<std::string> GetConfigFolders();

}  // namespace Tarvo::ConfigPolicy

#endif  // TARVO_CONFIG_POLICY_CONFIG_FOLDERS_H
