// The service's reader, walked node by node: the same dispatch by name, the same checks, and for
// each node what became of it.

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>
#include <string_view>

#include "config_check_parts.h"
#include "input_text.h"

namespace Tarvo::Emu::ConfigCheckParts {
namespace {
constexpr const char* ROOT_NAME = "ZelConfigs";
constexpr const char* SCENE_SECTION = "sceneConfig";
constexpr const char* SCENE_ENTRY = "zel";
constexpr const char* INVALID_NODE = "ZelConfig]: invalid node!";
const std::set<std::string> SWITCH_NAMES = {"supportResolutionChange", "supperGameFpsSolution"};
const std::set<std::string> NUMBER_NAMES = {
    "resolutionStyle", "defaultResolutionMode", "highLevel", "middleLevel",
    "lowLevel",        "maxCallbackSize",       "powermode", "ambientBrightnessThreshold",
};
// How much of a stray text a finding quotes.
constexpr size_t SHOWN_TEXT_CHARS = 40;

struct XmlFree {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, XmlFree>;

std::string Str(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

XmlText Attribute(xmlNode& node, const char* name)
{
    return XmlText(xmlGetProp(&node, reinterpret_cast<const xmlChar*>(name)));
}

std::string Quoted(std::string_view text, size_t limit = kShownChars)
{
    return "\"" + Shown(text, limit) + "\"";
}

std::string ReadNodeError(const std::string& name)
{
    return Logs("[ZelConfig] read xml node error: nodeName:(" + name + ")");
}

// The reader's test: a node without a name, or a comment, is not read.
bool IsValid(const xmlNode& node)
{
    return node.name != nullptr && node.type != XML_COMMENT_NODE;
}

// Texts, comments and CDATA sections carry the line they end on; a finding points at their start
// (a text's: its first visible character).
long LineOf(const xmlNode& node)
{
    if (node.type != XML_TEXT_NODE && node.type != XML_COMMENT_NODE && node.type != XML_CDATA_SECTION_NODE) {
        return xmlGetLineNo(&node);
    }
    const std::string_view content = node.content != nullptr ? reinterpret_cast<const char*>(node.content) : "";
    long line = static_cast<long>(node.line) - std::count(content.begin(), content.end(), '\n');
    if (node.type == XML_TEXT_NODE) {
        const std::string_view blank = content.substr(0, content.find_first_not_of(" \t\r\n"));
        line += std::count(blank.begin(), blank.end(), '\n');
    }
    return node.line != 0 ? std::max(line, 1L) : 0;
}

// Layout kept beside other text (the parser drops it only between elements): no finding, since
// neither the service nor its author gives it a meaning.
bool IsBlank(const xmlNode& node)
{
    const char* text = reinterpret_cast<const char*>(node.content);
    return node.type == XML_TEXT_NODE &&
           (text == nullptr || std::string_view(text).find_first_not_of(" \t\r\n") == std::string_view::npos);
}

std::string What(const xmlNode& node)
{
    switch (node.type) {
        case XML_ELEMENT_NODE:
            return "element " + Quoted(Str(node.name));
        case XML_TEXT_NODE:
            return "text " + Quoted(Str(node.content), SHOWN_TEXT_CHARS);
        case XML_COMMENT_NODE:
            return "a comment";
        case XML_CDATA_SECTION_NODE:
            return "a CDATA section";
        case XML_PI_NODE:
            return "processing instruction " + Quoted(Str(node.name));
        default:
            return "a node of type " + std::to_string(node.type);
    }
}

// The element the author probably meant, when only the case differs.
std::string Suggestion(const std::string& name)
{
    auto lower = [](std::string text) {
        for (char& c : text) {
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
        return text;
    };
    for (const auto* names : {&SWITCH_NAMES, &NUMBER_NAMES}) {
        for (const std::string& known : *names) {
            if (lower(known) == lower(name)) {
                return "; names are case-sensitive: \"" + known + "\"?";
            }
        }
    }
    return lower(name) == lower(SCENE_SECTION) ? "; names are case-sensitive: \"sceneConfig\"?" : "";
}

template <class Table>
std::string Replaces(const Table& table, const std::string& name)
{
    auto earlier = table.find(name);
    return earlier == table.end() ? "" : "; replaces line " + std::to_string(earlier->second.line);
}

// Why a token is not a number the reader takes, or empty when it is one.
std::string NotANumber(std::string_view token, int32_t* value)
{
    if (token.empty()) {
        return "an empty number (a leading, trailing or doubled space)";
    }
    for (char c : token) {
        if (c < '0' || c > '9') {
            const bool blank = token.find_first_of("\t\n\r") != std::string_view::npos;
            return Quoted(token) + " is not a number" + (blank ? " (numbers take single spaces, on one line)" : "");
        }
    }
    auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), *value);
    return error == std::errc() && end == token.data() + token.size()
               ? ""
               : Quoted(token) + " is beyond the signed 32-bit range";
}

class Reader {
public:
    Reader(ReadTables* tables, Findings* findings) : tables_(*tables), findings_(*findings) {}

    void RootChild(xmlNode& node);

private:
    void Add(const xmlNode& node, std::string text) { findings_.push_back({LineOf(node), std::move(text)}); }
    void Switch(xmlNode& node, const std::string& name);
    void Numbers(xmlNode& node, const std::string& name);
    void Scenes(xmlNode& section);
    // False when the entry stops the section.
    bool SceneEntry(xmlNode& entry);

    ReadTables& tables_;
    Findings& findings_;
};

void Reader::RootChild(xmlNode& node)
{
    if (IsBlank(node)) {
        return;
    }
    if (!IsValid(node)) {
        Add(node, "ignored: " + What(node) + " in ZelConfigs " + Logs(INVALID_NODE));
        return;
    }
    const std::string name = Str(node.name);
    if (SWITCH_NAMES.count(name) != 0) {
        Switch(node, name);
    } else if (name == SCENE_SECTION) {
        Scenes(node);
    } else if (NUMBER_NAMES.count(name) != 0) {
        Numbers(node, name);
    } else if (node.type == XML_ELEMENT_NODE) {
        Add(node, "ignored: " + What(node) + " in ZelConfigs: the service has no reader for it" + Suggestion(name));
    } else {
        Add(node, "ignored: " + What(node) + " in ZelConfigs");
    }
}

void Reader::Switch(xmlNode& node, const std::string& name)
{
    XmlText enable = Attribute(node, "enable");
    if (enable == nullptr) {
        Add(node, "rejected: " + name + " has no \"enable\" attribute, the element is skipped " + ReadNodeError(name));
        return;
    }
    const std::string value = Str(enable.get());
    const bool on = value == "true";
    std::string text = "read into the switch table: " + name + " = " + (on ? "true" : "false");
    if (!on && value != "false") {
        text += " (" + Quoted(value) + " is not the exact word \"true\")";
    }
    Add(node, text + Replaces(tables_.switches, name));
    tables_.switches[name] = {on, LineOf(node)};
}

void Reader::Numbers(xmlNode& node, const std::string& name)
{
    XmlText content(xmlNodeGetContent(&node));
    if (content == nullptr) {
        Add(node, "rejected: " + name + " has no content, the element is skipped " + ReadNodeError(name));
        return;
    }
    const std::string_view text = reinterpret_cast<const char*>(content.get());
    if (text.empty()) {
        Add(node, "ignored: " + name + " is empty, the element is skipped (the service logs nothing)");
        return;
    }
    std::vector<int32_t> numbers;
    std::string shown;
    for (size_t start = 0; start != std::string_view::npos;) {
        const size_t space = text.find(' ', start);
        int32_t value = 0;
        const std::string why = NotANumber(text.substr(start, space - start), &value);
        if (!why.empty()) {
            Add(node, "rejected: " + name + ": " + why + ", the element is skipped " +
                          Logs("[ZelConfig] read number error: nodeName:(" + name + ")"));
            return;
        }
        numbers.push_back(value);
        shown += (shown.empty() ? "" : " ") + std::to_string(value);
        start = space == std::string_view::npos ? space : space + 1;
    }
    Add(node, "read into the number-list table: " + name + " = " + shown + Replaces(tables_.numbers, name));
    tables_.numbers[name] = {std::move(numbers), LineOf(node)};
}

void Reader::Scenes(xmlNode& section)
{
    long stoppedAt = 0;
    for (xmlNodePtr child = section.children; child != nullptr; child = child->next) {
        if (IsBlank(*child)) {
            continue;
        }
        if (stoppedAt != 0) {
            Add(*child,
                "ignored: " + What(*child) + ": sceneConfig was abandoned at line " + std::to_string(stoppedAt));
        } else if (!IsValid(*child)) {
            Add(*child, "ignored: " + What(*child) + " in sceneConfig " + Logs(INVALID_NODE));
        } else if (Str(child->name) != SCENE_ENTRY) {
            Add(*child, "ignored: " + What(*child) + " in sceneConfig");
        } else if (!SceneEntry(*child)) {
            stoppedAt = LineOf(*child);
        }
    }
}

bool Reader::SceneEntry(xmlNode& entry)
{
    XmlText name = Attribute(entry, "name");
    XmlText interruptible = Attribute(entry, "interruptible");
    if (name == nullptr || interruptible == nullptr) {
        const char* missing = name != nullptr            ? "\"interruptible\""
                              : interruptible != nullptr ? "\"name\""
                                                         : "\"name\" and \"interruptible\"";
        Add(entry, std::string("rejected: a scene entry without ") + missing +
                       ", it and the rest of sceneConfig are skipped " + ReadNodeError(SCENE_SECTION));
        return false;
    }
    const std::string sceneName = Str(name.get());
    const std::string value = Str(interruptible.get());
    std::string text = "read into the scene catalogue: " + Quoted(sceneName) + ", " +
                       (value == "1" ? "interruptible" : "not interruptible");
    if (value != "1" && value != "0") {
        text += " (" + Quoted(value) + " is not \"1\")";
    }
    Add(entry, text + Replaces(tables_.scenes, sceneName));
    tables_.scenes[sceneName] = {value == "1", LineOf(entry)};
    return true;
}
}  // namespace

bool ReadLikeTheService(xmlDocPtr doc, ReadTables* tables, Findings* findings)
{
    xmlNodePtr root = xmlDocGetRootElement(doc);
    if (root == nullptr || Str(root->name) != ROOT_NAME) {
        const std::string what = root == nullptr ? "no root element" : "the root element is " + Quoted(Str(root->name));
        findings->push_back({root != nullptr ? LineOf(*root) : 0, "rejected: " + what + ", not \"ZelConfigs\" " +
                                                                      Logs("[ZelConfig] get root element failed!")});
        return false;
    }
    Reader reader(tables, findings);
    for (xmlNodePtr child = root->children; child != nullptr; child = child->next) {
        reader.RootChild(*child);
    }
    return true;
}

}  // namespace Tarvo::Emu::ConfigCheckParts
