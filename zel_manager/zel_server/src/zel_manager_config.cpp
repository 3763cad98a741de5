#include "zel_manager_config.h"

#include <fcntl.h>
#include <libxml/parser.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "config_policy_utils.h"
#include "frame_rate_control.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
constexpr unsigned int PATH_BUFFER_SIZE = PATH_MAX + 1;
constexpr const char* ROOT_NAME = "ZelConfigs";
constexpr const char* SCENE_CONFIG_NAME = "sceneConfig";
constexpr const char* SCENE_ENTRY_NAME = "zel";

const std::set<std::string> ENABLE_ITEMS = {"supportResolutionChange", "supperGameFpsSolution"};
const std::set<std::string> INT_NUMBERS_ITEMS = {
    "resolutionStyle", "defaultResolutionMode", "highLevel", "middleLevel",
    "lowLevel",        "maxCallbackSize",       "powermode", "ambientBrightnessThreshold",
};

// A real configuration is a few kilobytes; the limit bounds what a broken or hostile file can cost.
constexpr off_t CONFIG_SIZE_LIMIT = 1024 * 1024;
// Blank text nodes dropped; no network, no external DTD and no entity substitution.
constexpr int PARSE_OPTIONS = XML_PARSE_NOBLANKS | XML_PARSE_NONET;
// libxml2's own diagnostics, kept apart from the service's lines.
constexpr HiviewDFX::HiLogLabel XML_LOG_LABEL = {HiviewDFX::LOG_CORE, 0xD003900, "LIBXML2"};

// Only the parse itself is serialised; the tables are filled once on the start-up path.
std::recursive_mutex g_parseMutex;

enum class FileRead { OK, UNREADABLE, TOO_BIG };

std::string WithoutLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text;
}

struct XmlDiagnostic {
    HiviewDFX::LogLevel level;
    std::string text;
};
// Set while this thread parses under the parse lock: diagnostics wait there and are logged after
// the lock, so no log sink is called with it held.
thread_local std::vector<XmlDiagnostic>* tHeldDiagnostics = nullptr;

void LogXmlDiagnostic(const XmlDiagnostic& diagnostic)
{
    HiLogPrint(XML_LOG_LABEL.type, diagnostic.level, XML_LOG_LABEL.domain, XML_LOG_LABEL.tag, "%{public}s",
               diagnostic.text.c_str());
}

void Report(HiviewDFX::LogLevel level, std::string text)
{
    if (tHeldDiagnostics != nullptr) {
        tHeldDiagnostics->push_back({level, std::move(text)});
    } else {
        LogXmlDiagnostic({level, std::move(text)});
    }
}

void XmlGenericError(void* /* context */, const char* format, ...)
{
    char text[512];
    va_list args;
    va_start(args, format);
    (void)vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    std::string line = WithoutLineEnd(text);
    if (!line.empty()) {
        Report(HiviewDFX::LOG_WARN, std::move(line));
    }
}

void XmlStructuredError(void* /* context */, xmlErrorPtr error)
{
    if (error == nullptr) {
        return;
    }
    std::string message = WithoutLineEnd(error->message != nullptr ? error->message : "");
    HiviewDFX::LogLevel level = error->level == XML_ERR_WARNING ? HiviewDFX::LOG_WARN : HiviewDFX::LOG_ERROR;
    Report(level,
           std::string(error->file != nullptr ? error->file : "") + ":" + std::to_string(error->line) + ": " + message);
}

// libxml2 keeps its handlers per thread: threads started later copy the defaults set once here, and
// the calling thread, which may have met libxml2 before, is set directly.
void RouteXmlDiagnostics()
{
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xmlThrDefSetGenericErrorFunc(nullptr, XmlGenericError);
        xmlThrDefSetStructuredErrorFunc(nullptr, XmlStructuredError);
    });
    xmlSetGenericErrorFunc(nullptr, XmlGenericError);
    xmlSetStructuredErrorFunc(nullptr, XmlStructuredError);
}

// A file that grows meanwhile is read up to the size it had.
void ReadUpTo(int fd, size_t size, std::string& content)
{
    content.resize(size);
    size_t total = 0;
    while (total < size) {
        ssize_t got = read(fd, content.data() + total, size - total);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        total += static_cast<size_t>(got);
    }
    content.resize(total);
}

// The size is checked before anything is read; a FIFO or device is never read at all.
FileRead ReadConfigFile(const std::string& path, std::string& content)
{
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return FileRead::UNREADABLE;
    }
    struct stat info {};
    FileRead result = FileRead::UNREADABLE;
    if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
        result = info.st_size > CONFIG_SIZE_LIMIT ? FileRead::TOO_BIG : FileRead::OK;
    }
    if (result == FileRead::OK) {
        ReadUpTo(fd, static_cast<size_t>(info.st_size), content);
    }
    close(fd);
    return result;
}

const char* NodeName(const xmlNodePtr& node)
{
    return reinterpret_cast<const char*>(node->name);
}

bool IsDigits(const std::string& token)
{
    for (char c : token) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

// Empty tokens and values beyond the signed 32-bit range have no value.
std::optional<int32_t> ToInt32(const std::string& token)
{
    int32_t value = 0;
    const char* end = token.data() + token.size();
    auto [ptr, ec] = std::from_chars(token.data(), end, value);
    if (token.empty() || ec != std::errc() || ptr != end) {
        return std::nullopt;
    }
    return value;
}

// Owns one string libxml2 handed out.
class XmlString {
public:
    explicit XmlString(xmlChar* value) : value_(value) {}
    ~XmlString()
    {
        if (value_ != nullptr) {
            xmlFree(value_);
        }
    }
    XmlString(const XmlString&) = delete;
    XmlString& operator=(const XmlString&) = delete;

    bool IsNull() const { return value_ == nullptr; }
    std::string Str() const { return value_ == nullptr ? std::string() : reinterpret_cast<const char*>(value_); }

private:
    xmlChar* value_;
};

// The document, or null when the file is missing, unreadable, too big, not well-formed or has a
// document type declaration (its entities would be expanded by every later read of a value).
xmlDocPtr ParseConfigFile(const std::string& filePath)
{
    std::string content;
    FileRead read = ReadConfigFile(filePath, content);
    xmlDocPtr docPtr = nullptr;
    std::vector<XmlDiagnostic> diagnostics;
    if (read == FileRead::OK) {
        std::lock_guard<std::recursive_mutex> lock(g_parseMutex);
        RouteXmlDiagnostics();
        tHeldDiagnostics = &diagnostics;
        docPtr =
            xmlReadMemory(content.data(), static_cast<int>(content.size()), filePath.c_str(), nullptr, PARSE_OPTIONS);
        tHeldDiagnostics = nullptr;
    }
    for (const XmlDiagnostic& diagnostic : diagnostics) {
        LogXmlDiagnostic(diagnostic);
    }
    ZEL_LOGI("[ZelConfig] filePath: %{public}s", filePath.c_str());
    if (read == FileRead::TOO_BIG) {
        ZEL_LOGE("[ZelConfig] config file is bigger than %{public}lld bytes",
                 static_cast<long long>(CONFIG_SIZE_LIMIT));
    }
    if (docPtr != nullptr && (docPtr->intSubset != nullptr || docPtr->extSubset != nullptr)) {
        ZEL_LOGE("[ZelConfig] config file has a document type declaration");
        xmlFreeDoc(docPtr);
        docPtr = nullptr;
    }
    return docPtr;
}

}  // namespace

std::map<std::string, bool> ZelManagerConfig::enableConfig_;
std::map<std::string, std::vector<int32_t>> ZelManagerConfig::intNumbersConfig_;

std::string ZelManagerConfig::GetConfigPath(const std::string& configFileName)
{
    char buf[PATH_BUFFER_SIZE] = {0};
    char* configFilePath = GetOneCfgFile(configFileName.c_str(), buf, PATH_BUFFER_SIZE);
    char tmpPath[PATH_BUFFER_SIZE] = {0};
    if (configFilePath == nullptr || strlen(configFilePath) == 0 || strlen(configFilePath) > PATH_MAX ||
        realpath(configFilePath, tmpPath) == nullptr) {
        ZEL_LOGI("[ZelConfig] can not get customization config file");
        return "/system/" + configFileName;
    }
    return std::string(tmpPath);
}

bool ZelManagerConfig::LoadConfigXml()
{
    xmlDocPtr docPtr = ParseConfigFile(GetConfigPath(CONFIG_RELATIVE_PATH));
    if (docPtr == nullptr) {
        ZEL_LOGE("[ZelConfig] load xml error!");
        return false;
    }
    xmlNodePtr rootPtr = xmlDocGetRootElement(docPtr);
    if (rootPtr == nullptr || rootPtr->name == nullptr ||
        xmlStrcmp(rootPtr->name, reinterpret_cast<const xmlChar*>(ROOT_NAME)) != 0) {
        ZEL_LOGE("[ZelConfig] get root element failed!");
        xmlFreeDoc(docPtr);
        return false;
    }
    for (xmlNodePtr curNodePtr = rootPtr->children; curNodePtr != nullptr; curNodePtr = curNodePtr->next) {
        ReadRootChild(curNodePtr);
    }
    xmlFreeDoc(docPtr);
    return true;
}

void ZelManagerConfig::ReadRootChild(const xmlNodePtr& currNode)
{
    if (!IsValidNode(*currNode)) {
        ZEL_LOGE("ZelConfig]: invalid node!");
        return;
    }
    std::string name = NodeName(currNode);
    if (ENABLE_ITEMS.count(name) != 0) {
        ReadEnableConfigInfo(currNode);
    } else if (name == SCENE_CONFIG_NAME) {
        ReadSceneConfigInfo(currNode);
    } else if (INT_NUMBERS_ITEMS.count(name) != 0) {
        ReadIntNumbersConfigInfo(currNode);
    }
    // Other items belong to other readers of the file.
}

bool ZelManagerConfig::IsValidNode(const xmlNode& currNode)
{
    return currNode.name != nullptr && currNode.type != XML_COMMENT_NODE;
}

void ZelManagerConfig::ReadEnableConfigInfo(const xmlNodePtr& currNode)
{
    XmlString enable(xmlGetProp(currNode, reinterpret_cast<const xmlChar*>("enable")));
    if (enable.IsNull()) {
        ZEL_LOGE("[ZelConfig] read xml node error: nodeName:(%{public}s)", NodeName(currNode));
        return;
    }
    enableConfig_[NodeName(currNode)] = enable.Str() == "true";
}

void ZelManagerConfig::ReadSceneConfigInfo(const xmlNodePtr& currNode)
{
    for (xmlNodePtr child = currNode->children; child != nullptr; child = child->next) {
        if (!IsValidNode(*child)) {
            ZEL_LOGE("ZelConfig]: invalid node!");
            continue;
        }
        if (xmlStrcmp(child->name, reinterpret_cast<const xmlChar*>(SCENE_ENTRY_NAME)) != 0) {
            continue;
        }
        XmlString name(xmlGetProp(child, reinterpret_cast<const xmlChar*>("name")));
        XmlString interruptible(xmlGetProp(child, reinterpret_cast<const xmlChar*>("interruptible")));
        if (name.IsNull() || interruptible.IsNull()) {
            // The rest of the section is not trusted either; earlier entries stay.
            ZEL_LOGE("[ZelConfig] read xml node error: nodeName:(%{public}s)", NodeName(currNode));
            return;
        }
        FrameRateControl::SetBasicSceneAttributes(name.Str(), interruptible.Str());
    }
}

void ZelManagerConfig::ReadIntNumbersConfigInfo(const xmlNodePtr& currNode)
{
    XmlString content(xmlNodeGetContent(currNode));
    if (content.IsNull()) {
        ZEL_LOGE("[ZelConfig] read xml node error: nodeName:(%{public}s)", NodeName(currNode));
        return;
    }
    std::string text = content.Str();
    if (text.empty()) {
        return;
    }
    std::vector<int32_t> numbers;
    for (const auto& token : Split(text, " ")) {
        std::optional<int32_t> value = IsDigits(token) ? ToInt32(token) : std::nullopt;
        if (!value.has_value()) {
            ZEL_LOGE("[ZelConfig] read number error: nodeName:(%{public}s)", NodeName(currNode));
            return;
        }
        numbers.push_back(*value);
    }
    intNumbersConfig_[NodeName(currNode)] = std::move(numbers);
}

std::vector<std::string> ZelManagerConfig::Split(std::string str, std::string pattern)
{
    std::vector<std::string> result;
    if (pattern.empty()) {
        // Nothing to split at; an empty delimiter would match without advancing.
        if (!str.empty()) {
            result.push_back(str);
        }
        return result;
    }
    str += pattern;
    if (str.size() > static_cast<size_t>(INT32_MAX)) {
        return result;
    }
    int32_t size = static_cast<int32_t>(str.size());
    if (size < 1) {
        return result;
    }
    int32_t i = 0;
    while (i < size) {
        size_t pos = str.find(pattern, static_cast<size_t>(i));
        if (pos != std::string::npos && pos < static_cast<size_t>(size)) {
            result.push_back(str.substr(static_cast<size_t>(i), pos - static_cast<size_t>(i)));
            i = static_cast<int32_t>(pos + pattern.size());
        } else {
            ++i;
        }
    }
    return result;
}

std::map<std::string, bool>& ZelManagerConfig::GetEnableConfig()
{
    return enableConfig_;
}

std::map<std::string, std::vector<int32_t>>& ZelManagerConfig::GetIntNumbersConfig()
{
    return intNumbersConfig_;
}

void ZelManagerConfig::DumpConfig()
{
    for (const auto& [name, enabled] : enableConfig_) {
        ZEL_LOGI("[ZelConfig] Enable: %{public}s %{public}u", name.c_str(), enabled ? 1u : 0u);
    }
    for (const auto& [name, numbers] : intNumbersConfig_) {
        ZEL_LOGI("[ZelConfig] Numbers: %{public}s %{public}zu", name.c_str(), numbers.size());
        for (int32_t number : numbers) {
            ZEL_LOGI("[ZelConfig] Num: %{public}d", number);
        }
    }
}

}  // namespace Tarvo::Vantel
