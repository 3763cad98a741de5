#ifndef ZEL_MANAGER_ZEL_MANAGER_CONFIG_H
#define ZEL_MANAGER_ZEL_MANAGER_CONFIG_H

#include <libxml/tree.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Tarvo::Vantel {

// The product configuration, read once at start-up from "etc/zel_manager/zel_manager_config.xml"
// under the root element "ZelConfigs". Switches and number lists are kept here; scene entries are
// handed to FrameRateControl as they are read. The tables are written only by LoadConfigXml and
// read without a lock afterwards.
class ZelManagerConfig {
public:
    static constexpr const char* CONFIG_RELATIVE_PATH = "etc/zel_manager/zel_manager_config.xml";

    ZelManagerConfig() = delete;

    // True when a document with the right root element was read; elements that failed are absent.
    static bool LoadConfigXml();
    // The highest-priority configuration file of that path, or "/system/<path>" when none is found.
    static std::string GetConfigPath(const std::string& configFileName);
    static bool IsValidNode(const xmlNode& currNode);
    static void ReadEnableConfigInfo(const xmlNodePtr& currNode);
    static void ReadSceneConfigInfo(const xmlNodePtr& currNode);
    static void ReadIntNumbersConfigInfo(const xmlNodePtr& currNode);
    static std::vector<std::string> Split(std::string str, std::string pattern);
    static std::map<std::string, bool>& GetEnableConfig();
    static std::map<std::string, std::vector<int32_t>>& GetIntNumbersConfig();
    static void DumpConfig();

private:
    static void ReadRootChild(const xmlNodePtr& currNode);

    static std::map<std::string, bool> enableConfig_;
    static std::map<std::string, std::vector<int32_t>> intNumbersConfig_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MANAGER_CONFIG_H
