// Reading the product configuration: what lands in the tables, what reaches the scene catalogue and
// what is logged, for good files and for each way a file can be broken.
#include "zel_manager_config.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "config_folders.h"
#include "frame_rate_control.h"
#include "hilog.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

const fs::path SOURCE_DIR = ZEL_SOURCE_DIR;
const fs::path PRODUCT_FILE = SOURCE_DIR / "zel_manager" / "etc" / "zel_manager_config.xml";
constexpr const char* RELATIVE_PATH = "etc/zel_manager/zel_manager_config.xml";
constexpr size_t SIZE_LIMIT = 1024 * 1024;

std::string Document(const std::string& items)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ZelConfigs>\n" + items + "\n</ZelConfigs>\n";
}

// The document grown to exactly `size` bytes by a comment after the root.
std::string Padded(const std::string& document, size_t size)
{
    return document + "<!--" + std::string(size - document.size() - 8, 'x') + "-->\n";
}

std::string ReadFile(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// Switches "name=0|1", number lists "name=1,2", then scenes "NAME:1" when interruptible.
std::string Tables()
{
    std::string out;
    for (const auto& [name, enabled] : ZelManagerConfig::GetEnableConfig()) {
        out += " " + name + (enabled ? "=1" : "=0");
    }
    for (const auto& [name, numbers] : ZelManagerConfig::GetIntNumbersConfig()) {
        out += " " + name + "=";
        for (size_t i = 0; i < numbers.size(); ++i) {
            out += (i == 0 ? "" : ",") + std::to_string(numbers[i]);
        }
    }
    for (const auto& [name, info] : FrameRateControl::sSceneConfig) {
        out += " " + name + (info.interruptible ? ":1" : ":0");
    }
    return out.empty() ? out : out.substr(1);
}

class ZelManagerConfigTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "zel_config_test_XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        ConfigPolicy::SetConfigFolders({(root_ / "system").string(), (root_ / "chip").string()});
    }
    void TearDown() override
    {
        ConfigPolicy::SetConfigFolders({});
        fs::remove_all(root_);
    }

    // Places a configuration file in one of the two configuration folders.
    fs::path Write(const std::string& content, const std::string& folder = "system")
    {
        fs::path path = root_ / folder / RELATIVE_PATH;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::trunc) << content;
        return path;
    }
    // The service's warnings and errors as "L text"; libxml2's own are under another domain.
    Strings Complaints() const
    {
        Strings lines;
        for (const HiviewDFX::LogRecord& record : log_.Records()) {
            if (record.domain == ZEL_LOG_LABEL.domain && record.level >= HiviewDFX::LOG_WARN) {
                lines.push_back(std::string(1, HiviewDFX::LevelLetter(record.level)) + " " + record.message);
            }
        }
        return lines;
    }

    fs::path root_;
    HiviewDFX::LogCapture log_;
};

TEST_F(ZelManagerConfigTest, TheHighestPriorityFolderWinsAndItsPathIsCanonical)
{
    Write(Document("<powermode>30 60</powermode>"), "system");
    fs::path chip = Write(Document("<powermode>60 120</powermode>"), "chip");
    ConfigPolicy::SetConfigFolders({(root_ / "system").string(), (root_ / "system" / ".." / "chip").string()});

    EXPECT_EQ(ZelManagerConfig::GetConfigPath(RELATIVE_PATH), fs::canonical(chip).string());
    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());
    EXPECT_EQ(log_.Lines(), Strings{"I [ZelConfig] filePath: " + fs::canonical(chip).string()});
    EXPECT_EQ(Tables(), "powermode=60,120");
    // An unknown relative path falls back without looking.
    EXPECT_EQ(ZelManagerConfig::GetConfigPath("etc/none.xml"), "/system/etc/none.xml");
}

std::string NumberError(const std::string& name)
{
    return "E [ZelConfig] read number error: nodeName:(" + name + ")";
}

TEST_F(ZelManagerConfigTest, EachFileIsReadAsFarAsItHoldsAndEveryProblemIsReported)
{
    // Cut short, a wrong root, document types and an empty root are played in the config_*.scn scenarios.
    const std::string powermode = Document("<powermode>60 120</powermode>");
    const char* loadError = "E [ZelConfig] load xml error!";
    struct Case {
        std::string file;
        bool loads;
        Strings complaints;
        std::string tables = "";  // what the tables hold after the load
    };
    const std::vector<Case> cases = {
        {Padded(powermode, SIZE_LIMIT), true, {}, "powermode=60,120"},
        {Padded(powermode, SIZE_LIMIT + 1),
         false,
         {"E [ZelConfig] config file is bigger than 1048576 bytes", loadError}},
        // Comments are reported, unknown items skipped silently; only the exact word true is on, and the last
        // occurrence of an item wins.
        {Document(R"(<!-- tuning --><vendorExtension enable="true">1 2</vendorExtension>
            <supportResolutionChange enable="TRUE"/><supperGameFpsSolution enable="true"/>
            <supperGameFpsSolution enable="1"/><supportResolutionChange/>
            <powermode>30 60</powermode><highLevel>1200 2600 540</highLevel><powermode>60 120</powermode>
            <maxCallbackSize>0007 2147483647</maxCallbackSize><resolutionStyle></resolutionStyle>
            <ambientBrightnessThreshold>300 200 100</ambientBrightnessThreshold>)"),
         true,
         {"E ZelConfig]: invalid node!", "E [ZelConfig] read xml node error: nodeName:(supportResolutionChange)"},
         "supperGameFpsSolution=0 supportResolutionChange=0 ambientBrightnessThreshold=300,200,100 "
         "highLevel=1200,2600,540 maxCallbackSize=7,2147483647 powermode=60,120"},
        // Any bad token, empty ones and those beyond 32 bits included, drops the whole list.
        {Document(
             R"(<highLevel>1200 2600 abc</highLevel><middleLevel>-1 2 3</middleLevel><lowLevel>600&#9;1300</lowLevel>
            <defaultResolutionMode>3</defaultResolutionMode><powermode>60  120</powermode>
            <maxCallbackSize> 1000 5</maxCallbackSize><highLevel>900 1950 405 </highLevel>
            <lowLevel>2147483648 1 1</lowLevel><middleLevel>1 99999999999999999999999</middleLevel>)"),
         true,
         {NumberError("highLevel"), NumberError("middleLevel"), NumberError("lowLevel"), NumberError("powermode"),
          NumberError("maxCallbackSize"), NumberError("highLevel"), NumberError("lowLevel"),
          NumberError("middleLevel")},
         "defaultResolutionMode=3"},
        // Scenes up to the first incomplete entry of a list; the catalogue takes only "1" as interruptible.
        {Document(R"(<sceneConfig><zel name="BACK_DESKTOP" interruptible="0"/><!-- desktop -->
            <scene name="IGNORED" interruptible="1"/><zel name="APP_LIST_FLING" interruptible="1"/>
            <zel name="FOLLOW_HAND" interruptible="true"/><zel name="S_DDN"/><zel name="LATER" interruptible="0"/>
            </sceneConfig><sceneConfig><zel interruptible="1"/><zel name="LAST" interruptible="1"/></sceneConfig>
            <powermode>60 120</powermode>)"),
         true,
         {"E ZelConfig]: invalid node!", "E [ZelConfig] read xml node error: nodeName:(sceneConfig)",
          "E [ZelConfig] read xml node error: nodeName:(sceneConfig)"},
         "powermode=60,120 APP_LIST_FLING:1 BACK_DESKTOP:0 FOLLOW_HAND:0"},
        {ReadFile(PRODUCT_FILE),
         true,
         {},
         "supperGameFpsSolution=1 supportResolutionChange=1 ambientBrightnessThreshold=100,200,300 "
         "defaultResolutionMode=3 highLevel=1200,2600,540 lowLevel=600,1300,270 maxCallbackSize=1000,5 "
         "middleLevel=900,1950,405 powermode=60,120 resolutionStyle=1 APP_LIST_FLING:1 BACK_DESKTOP:0 "
         "BACK_MULTIPLE_TASKBARS:0 BACK_ORIGIN_APP:0 CONTROL_CENTER_PULL:1 DESKTOP_PAGE_SWIPE:1 "
         "ENTER_MULTIPLE_TASKBARS:1 FOLDER_CLOSE:1 FOLDER_OPEN:1 FOLLOW_HAND:0 NOTIFICATION_PANEL_PULL:1 ROTATION:1 "
         "SCREEN_UNLOCK:0 START_APP_FROM_DESKTOP:0 START_APP_FROM_MULTIPLE_TASKBARS:0 S_DDN:0"},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        Write(cases[i].file);
        ZelManagerConfig::GetEnableConfig().clear();
        ZelManagerConfig::GetIntNumbersConfig().clear();
        FrameRateControl::sSceneConfig.clear();
        log_.Clear();
        EXPECT_EQ(ZelManagerConfig::LoadConfigXml(), cases[i].loads) << "case " << i;
        EXPECT_EQ(Complaints(), cases[i].complaints) << "case " << i;
        EXPECT_EQ(Tables(), cases[i].tables) << "case " << i;
    }
    // Refused from its size alone: a sparse gigabyte is never read.
    fs::resize_file(Write(powermode), 1ULL << 30);
    EXPECT_FALSE(ZelManagerConfig::LoadConfigXml());
}

TEST_F(ZelManagerConfigTest, LibxmlDiagnosticsGoToThePlatformLogUnderTheirOwnLabelOnly)
{
    fs::path path = Write(Document("<powermode>60 120</powermode>").substr(0, 60));
    HiviewDFX::HiLogOutput::SetStderrEnabled(false);
    int saved = dup(STDERR_FILENO);
    FILE* captured = tmpfile();
    dup2(fileno(captured), STDERR_FILENO);
    EXPECT_FALSE(ZelManagerConfig::LoadConfigXml());
    fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    HiviewDFX::HiLogOutput::SetStderrEnabled(true);
    EXPECT_EQ(ftell(captured), 0L);
    fclose(captured);

    Strings diagnostics;
    for (const HiviewDFX::LogRecord& record : log_.Records()) {
        if (record.domain != ZEL_LOG_LABEL.domain) {
            diagnostics.push_back(record.tag + " " + record.message.substr(0, fs::canonical(path).string().size()));
        }
    }
    ASSERT_FALSE(diagnostics.empty());
    EXPECT_EQ(diagnostics, Strings(diagnostics.size(), "LIBXML2 " + fs::canonical(path).string()));
}

TEST_F(ZelManagerConfigTest, SplitYieldsEveryFieldBetweenDelimitersIncludingEmptyOnes)
{
    EXPECT_EQ(ZelManagerConfig::Split("1 2", " "), (Strings{"1", "2"}));
    EXPECT_EQ(ZelManagerConfig::Split("1  2", " "), (Strings{"1", "", "2"}));
    EXPECT_EQ(ZelManagerConfig::Split("1 2 ", " "), (Strings{"1", "2", ""}));
    EXPECT_EQ(ZelManagerConfig::Split("", " "), (Strings{""}));
    EXPECT_EQ(ZelManagerConfig::Split("a, b,c", ", "), (Strings{"a", "b,c"}));
    EXPECT_EQ(ZelManagerConfig::Split("", ""), Strings{});
    EXPECT_EQ(ZelManagerConfig::Split("12", ""), (Strings{"12"}));
}

TEST_F(ZelManagerConfigTest, DumpListsSwitchesThenNumbersInNameOrder)
{
    ZelManagerConfig::GetEnableConfig() = {{"supportResolutionChange", true}, {"supperGameFpsSolution", false}};
    ZelManagerConfig::GetIntNumbersConfig() = {{"powermode", {60, 120}}, {"defaultResolutionMode", {3}}};
    ZelManagerConfig::DumpConfig();
    EXPECT_EQ(
        log_.Lines(),
        (Strings{"I [ZelConfig] Enable: supperGameFpsSolution 0", "I [ZelConfig] Enable: supportResolutionChange 1",
                 "I [ZelConfig] Numbers: defaultResolutionMode 1", "I [ZelConfig] Num: 3",
                 "I [ZelConfig] Numbers: powermode 2", "I [ZelConfig] Num: 60", "I [ZelConfig] Num: 120"}));
}

// The schema's complaints about a document, empty when it is valid.
std::string SchemaErrors(const std::string& text)
{
    static xmlSchemaPtr schema = [] {
        xmlSchemaParserCtxtPtr parser =
            xmlSchemaNewParserCtxt((PRODUCT_FILE.parent_path() / "zel_manager_config.xsd").c_str());
        xmlSchemaPtr parsed = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
        return parsed;
    }();
    std::string errors;
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "text.xml", nullptr, XML_PARSE_NONET);
    xmlSchemaValidCtxtPtr context = xmlSchemaNewValidCtxt(schema);
    xmlSchemaSetValidStructuredErrors(
        context, [](void* out, xmlErrorPtr error) { *static_cast<std::string*>(out) += error->message; }, &errors);
    bool valid = doc != nullptr && xmlSchemaValidateDoc(context, doc) == 0;
    xmlSchemaFreeValidCtxt(context);
    xmlFreeDoc(doc);
    return valid || !errors.empty() ? errors : "invalid";
}

TEST_F(ZelManagerConfigTest, ShippedAndExampleConfigurationsMatchTheSchemaWhichRejectsWhatTheReaderWouldDrop)
{
    // Every configuration shipped or shown in the examples, recognised by its root element.
    std::vector<std::string> files = {ReadFile(PRODUCT_FILE)};
    for (const auto& entry : fs::recursive_directory_iterator(SOURCE_DIR / "examples")) {
        const bool broken = entry.path().parent_path().filename() == "broken";  // meant to fail
        if (entry.path().extension() == ".xml" && !broken &&
            ReadFile(entry.path()).find("<ZelConfigs") != std::string::npos) {
            files.push_back(ReadFile(entry.path()));
        }
    }
    ASSERT_GE(files.size(), 2u);
    for (const auto& file : files) {
        EXPECT_EQ(SchemaErrors(file), "") << file;
    }
    EXPECT_EQ(SchemaErrors(Document("<powermode>60 120</powermode>")), "");
    for (const char* item :
         {"<supportResolutionChange enable=\"TRUE\"/>", "<supperGameFpsSolution/>", "<powermode>60  120</powermode>",
          "<powermode>60 120 </powermode>", "<highLevel>1200 2600 abc</highLevel>", "<highLevel>1200 2600</highLevel>",
          "<defaultResolutionMode>4</defaultResolutionMode>", "<maxCallbackSize>-1 5</maxCallbackSize>",
          "<sceneConfig><zel name=\"S_DDN\"/></sceneConfig>",
          "<sceneConfig><zel name=\"S_DDN\" interruptible=\"true\"/></sceneConfig>",
          "<sceneConfig><zel name=\"A\" interruptible=\"1\"/><zel name=\"A\" interruptible=\"0\"/></sceneConfig>",
          "<sceneConfig><scene name=\"A\" interruptible=\"1\"/></sceneConfig>",
          "<supportResolutionChang enable=\"true\"/>"}) {
        EXPECT_NE(SchemaErrors(Document(item)), "") << item;
    }
}

}  // namespace
}  // namespace Tarvo::Vantel
