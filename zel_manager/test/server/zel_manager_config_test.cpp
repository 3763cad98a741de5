// Reading the product configuration: what lands in the tables, what reaches the scene catalogue and
// what is logged, for good files and for each way a file can be broken.
#include "zel_manager_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "config_folders.h"
#include "frame_rate_control.h"
#include "hilog.h"

namespace Tarvo::Vantel {
namespace {
namespace fs = std::filesystem;
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LOG_WARN;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const fs::path SOURCE_DIR = ZEL_SOURCE_DIR;
const fs::path PRODUCT_DIR = SOURCE_DIR / "zel_manager" / "etc";
constexpr const char* RELATIVE_PATH = "etc/zel_manager/zel_manager_config.xml";

std::string Document(const std::string& items)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ZelConfigs>\n" + items + "\n</ZelConfigs>\n";
}

// "NAME:1" per configured scene, 1 when interruptible, in the catalogue's order.
std::vector<std::string> Scenes()
{
    std::vector<std::string> scenes;
    for (const auto& [name, info] : FrameRateControl::sSceneConfig) {
        scenes.push_back(name + ":" + (info.interruptible ? "1" : "0"));
    }
    return scenes;
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
        std::ofstream(path) << content;
        return path;
    }

    fs::path root_;
    HiviewDFX::LogCapture log_;
};

TEST_F(ZelManagerConfigTest, WithoutAnyFileTheSystemFallbackIsTriedAndNothingIsRead)
{
    EXPECT_FALSE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_INFO),
                ElementsAre("[ZelConfig] can not get customization config file",
                            "[ZelConfig] filePath: /system/etc/zel_manager/zel_manager_config.xml"));
    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] load xml error!"));
    EXPECT_THAT(ZelManagerConfig::GetEnableConfig(), IsEmpty());
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), IsEmpty());
    EXPECT_THAT(FrameRateControl::sSceneConfig, IsEmpty());
}

TEST_F(ZelManagerConfigTest, TheHighestPriorityFolderWinsAndItsPathIsCanonical)
{
    Write(Document("<powermode>30 60</powermode>"), "system");
    fs::path chip = Write(Document("<powermode>60 120</powermode>"), "chip");
    ConfigPolicy::SetConfigFolders({(root_ / "system").string(), (root_ / "system" / ".." / "chip").string()});

    EXPECT_EQ(ZelManagerConfig::GetConfigPath(RELATIVE_PATH), fs::canonical(chip).string());
    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_INFO), ElementsAre("[ZelConfig] filePath: " + fs::canonical(chip).string()));
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), ElementsAre(Pair("powermode", ElementsAre(60, 120))));
    // An unknown relative path falls back without looking.
    EXPECT_EQ(ZelManagerConfig::GetConfigPath("etc/none.xml"), "/system/etc/none.xml");
}

TEST_F(ZelManagerConfigTest, OnlyAWellFormedDocumentUnderTheRightRootIsAccepted)
{
    Write(Document("<powermode>60 120</powermode>").substr(0, 60));  // cut short
    EXPECT_FALSE(ZelManagerConfig::LoadConfigXml());
    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] load xml error!"));

    log_.Clear();
    Write("<?xml version=\"1.0\"?>\n<zelConfigs><powermode>60 120</powermode></zelConfigs>\n");
    EXPECT_FALSE(ZelManagerConfig::LoadConfigXml());
    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] get root element failed!"));
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), IsEmpty());

    // A root without items is a configuration that configures nothing.
    log_.Clear();
    Write("<?xml version=\"1.0\"?>\n<ZelConfigs/>\n");
    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());
    EXPECT_THAT(log_.Messages(LOG_ERROR), IsEmpty());
    EXPECT_THAT(ZelManagerConfig::GetEnableConfig(), IsEmpty());
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), IsEmpty());
}

TEST_F(ZelManagerConfigTest, CommentsAreReportedAndSkippedAndUnknownItemsIgnoredSilently)
{
    Write(
        Document("<!-- product tuning -->\n"
                 "<vendorExtension enable=\"true\">1 2</vendorExtension>\n"
                 "<supportResolutionChange enable=\"true\"/>\n"
                 "<sceneConfig><!-- desktop --><zel name=\"BACK_DESKTOP\" interruptible=\"0\"/></sceneConfig>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("ZelConfig]: invalid node!", "ZelConfig]: invalid node!"));
    EXPECT_THAT(ZelManagerConfig::GetEnableConfig(), ElementsAre(Pair("supportResolutionChange", true)));
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), IsEmpty());
    EXPECT_THAT(Scenes(), ElementsAre("BACK_DESKTOP:0"));
}

TEST_F(ZelManagerConfigTest, SwitchesAreOnOnlyForTheExactWordTrueAndTheLastOccurrenceWins)
{
    Write(
        Document("<supportResolutionChange enable=\"TRUE\"/>\n"
                 "<supperGameFpsSolution enable=\"true\"/>\n"
                 "<supperGameFpsSolution enable=\"1\"/>\n"
                 "<supportResolutionChange/>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(ZelManagerConfig::GetEnableConfig(),
                ElementsAre(Pair("supperGameFpsSolution", false), Pair("supportResolutionChange", false)));
    EXPECT_THAT(log_.Messages(LOG_ERROR),
                ElementsAre("[ZelConfig] read xml node error: nodeName:(supportResolutionChange)"));
}

TEST_F(ZelManagerConfigTest, NumberListsKeepFileOrderAndALaterElementReplacesAnEarlierOne)
{
    Write(
        Document("<powermode>30 60</powermode>\n"
                 "<highLevel>1200 2600 540</highLevel>\n"
                 "<powermode>60 120</powermode>\n"
                 "<maxCallbackSize>0007 2147483647</maxCallbackSize>\n"
                 "<ambientBrightnessThreshold>300 200 100</ambientBrightnessThreshold>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_ERROR), IsEmpty());
    EXPECT_THAT(
        ZelManagerConfig::GetIntNumbersConfig(),
        ElementsAre(Pair("ambientBrightnessThreshold", ElementsAre(300, 200, 100)),
                    Pair("highLevel", ElementsAre(1200, 2600, 540)),
                    Pair("maxCallbackSize", ElementsAre(7, 2147483647)), Pair("powermode", ElementsAre(60, 120))));
}

TEST_F(ZelManagerConfigTest, AnyBadTokenDropsTheWholeListWhileEmptyContentIsSkippedQuietly)
{
    Write(
        Document("<highLevel>1200 2600 abc</highLevel>\n"
                 "<middleLevel>-1 2 3</middleLevel>\n"
                 "<lowLevel>600\t1300 270</lowLevel>\n"
                 "<resolutionStyle></resolutionStyle>\n"
                 "<defaultResolutionMode>3</defaultResolutionMode>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] read number error: nodeName:(highLevel)",
                                                      "[ZelConfig] read number error: nodeName:(middleLevel)",
                                                      "[ZelConfig] read number error: nodeName:(lowLevel)"));
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), ElementsAre(Pair("defaultResolutionMode", ElementsAre(3))));
}

TEST_F(ZelManagerConfigTest, EmptyTokensAndNumbersBeyondThirtyTwoBitsAreReadNumberErrors)
{
    Write(
        Document("<powermode>60  120</powermode>\n"
                 "<highLevel> 1200 2600 540</highLevel>\n"
                 "<middleLevel>900 1950 405 </middleLevel>\n"
                 "<lowLevel>2147483648 1 1</lowLevel>\n"
                 "<maxCallbackSize>1000 99999999999999999999999</maxCallbackSize>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] read number error: nodeName:(powermode)",
                                                      "[ZelConfig] read number error: nodeName:(highLevel)",
                                                      "[ZelConfig] read number error: nodeName:(middleLevel)",
                                                      "[ZelConfig] read number error: nodeName:(lowLevel)",
                                                      "[ZelConfig] read number error: nodeName:(maxCallbackSize)"));
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), IsEmpty());
}

TEST_F(ZelManagerConfigTest, SceneEntriesReachTheCatalogueUntilTheFirstIncompleteOne)
{
    Write(
        Document("<sceneConfig>\n"
                 "  <zel name=\"BACK_DESKTOP\" interruptible=\"0\"/>\n"
                 "  <scene name=\"IGNORED\" interruptible=\"1\"/>\n"
                 "  <zel name=\"APP_LIST_FLING\" interruptible=\"1\"/>\n"
                 "  <zel name=\"FOLLOW_HAND\" interruptible=\"true\"/>\n"
                 "  <zel name=\"S_DDN\"/>\n"
                 "  <zel name=\"BACK_ORIGIN_APP\" interruptible=\"0\"/>\n"
                 "</sceneConfig>\n"
                 "<sceneConfig><zel interruptible=\"1\"/><zel name=\"LATER\" interruptible=\"1\"/></sceneConfig>\n"
                 "<powermode>60 120</powermode>"));

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    // The catalogue takes the flag as text: only "1" is interruptible.
    EXPECT_THAT(Scenes(), ElementsAre("APP_LIST_FLING:1", "BACK_DESKTOP:0", "FOLLOW_HAND:0"));
    EXPECT_THAT(log_.Messages(LOG_ERROR), ElementsAre("[ZelConfig] read xml node error: nodeName:(sceneConfig)",
                                                      "[ZelConfig] read xml node error: nodeName:(sceneConfig)"));
    // Items after a broken scene list are still read.
    EXPECT_THAT(ZelManagerConfig::GetIntNumbersConfig(), ElementsAre(Pair("powermode", ElementsAre(60, 120))));
}

TEST_F(ZelManagerConfigTest, SplitYieldsEveryFieldBetweenDelimitersIncludingEmptyOnes)
{
    using Tokens = std::vector<std::string>;
    EXPECT_EQ(ZelManagerConfig::Split("1 2", " "), (Tokens{"1", "2"}));
    EXPECT_EQ(ZelManagerConfig::Split("1  2", " "), (Tokens{"1", "", "2"}));
    EXPECT_EQ(ZelManagerConfig::Split("1 2 ", " "), (Tokens{"1", "2", ""}));
    EXPECT_EQ(ZelManagerConfig::Split("", " "), (Tokens{""}));
    EXPECT_EQ(ZelManagerConfig::Split("a, b,c", ", "), (Tokens{"a", "b,c"}));
    EXPECT_EQ(ZelManagerConfig::Split("", ""), Tokens{});
    EXPECT_EQ(ZelManagerConfig::Split("12", ""), (Tokens{"12"}));
}

TEST_F(ZelManagerConfigTest, DumpListsSwitchesThenNumbersInNameOrder)
{
    Write(
        Document("<supportResolutionChange enable=\"true\"/>\n"
                 "<supperGameFpsSolution enable=\"false\"/>\n"
                 "<powermode>60 120</powermode>\n"
                 "<defaultResolutionMode>3</defaultResolutionMode>"));
    ASSERT_TRUE(ZelManagerConfig::LoadConfigXml());
    log_.Clear();

    ZelManagerConfig::DumpConfig();

    EXPECT_THAT(
        log_.Lines(),
        ElementsAre("I [ZelConfig] Enable: supperGameFpsSolution 0", "I [ZelConfig] Enable: supportResolutionChange 1",
                    "I [ZelConfig] Numbers: defaultResolutionMode 1", "I [ZelConfig] Num: 3",
                    "I [ZelConfig] Numbers: powermode 2", "I [ZelConfig] Num: 60", "I [ZelConfig] Num: 120"));
}

TEST_F(ZelManagerConfigTest, TheProductConfigurationConfiguresEveryItemWithoutComplaint)
{
    fs::path product = PRODUCT_DIR / "zel_manager_config.xml";
    fs::create_directories(root_ / "system" / "etc" / "zel_manager");
    fs::copy_file(product, root_ / "system" / RELATIVE_PATH);

    EXPECT_TRUE(ZelManagerConfig::LoadConfigXml());

    EXPECT_THAT(log_.Messages(LOG_ERROR), IsEmpty());
    EXPECT_THAT(log_.Messages(LOG_WARN), IsEmpty());
    EXPECT_THAT(ZelManagerConfig::GetEnableConfig(),
                ElementsAre(Pair("supperGameFpsSolution", true), Pair("supportResolutionChange", true)));
    const auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    std::vector<std::pair<std::string, size_t>> counts;
    for (const auto& [name, list] : numbers) {
        counts.emplace_back(name, list.size());
    }
    EXPECT_THAT(counts, ElementsAre(Pair("ambientBrightnessThreshold", 3), Pair("defaultResolutionMode", 1),
                                    Pair("highLevel", 3), Pair("lowLevel", 3), Pair("maxCallbackSize", 2),
                                    Pair("middleLevel", 3), Pair("powermode", 2), Pair("resolutionStyle", 1)));
    for (const char* scene : {"BACK_DESKTOP", "FOLLOW_HAND", "S_DDN", "BACK_ORIGIN_APP",
                              "START_APP_FROM_MULTIPLE_TASKBARS", "BACK_MULTIPLE_TASKBARS"}) {
        ASSERT_EQ(FrameRateControl::sSceneConfig.count(scene), 1u) << scene;
        EXPECT_FALSE(FrameRateControl::sSceneConfig[scene].interruptible) << scene;
    }
}

// The schema of the product file, applied with libxml2's own validator.
class ConfigSchema {
public:
    ConfigSchema()
    {
        xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt((PRODUCT_DIR / "zel_manager_config.xsd").c_str());
        schema_ = xmlSchemaParse(parser);
        xmlSchemaFreeParserCtxt(parser);
    }
    ~ConfigSchema() { xmlSchemaFree(schema_); }
    ConfigSchema(const ConfigSchema&) = delete;
    ConfigSchema& operator=(const ConfigSchema&) = delete;

    bool Loaded() const { return schema_ != nullptr; }
    // The validator's complaints, empty when the document is valid.
    std::string Validate(xmlDocPtr doc) const
    {
        if (doc == nullptr) {
            return "not well-formed";
        }
        std::string errors;
        xmlSchemaValidCtxtPtr context = xmlSchemaNewValidCtxt(schema_);
        xmlSchemaSetValidStructuredErrors(context, CollectError, &errors);
        if (xmlSchemaValidateDoc(context, doc) != 0 && errors.empty()) {
            errors = "invalid";
        }
        xmlSchemaFreeValidCtxt(context);
        xmlFreeDoc(doc);
        return errors;
    }
    std::string ValidateFile(const fs::path& path) const
    {
        return Validate(xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET));
    }
    std::string ValidateText(const std::string& text) const
    {
        return Validate(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "text.xml", nullptr, XML_PARSE_NONET));
    }

private:
    static void CollectError(void* errors, xmlErrorPtr error)
    {
        *static_cast<std::string*>(errors) += error->message != nullptr ? error->message : "error";
    }

    xmlSchemaPtr schema_ = nullptr;
};

// Every configuration shipped or shown in the examples, recognised by its root element.
std::vector<fs::path> ShippedConfigurations()
{
    std::vector<fs::path> files = {PRODUCT_DIR / "zel_manager_config.xml"};
    for (const auto& entry : fs::recursive_directory_iterator(SOURCE_DIR / "examples")) {
        if (!entry.is_regular_file() || entry.path().extension() != ".xml") {
            continue;
        }
        xmlDocPtr doc = xmlReadFile(entry.path().c_str(), nullptr, XML_PARSE_NONET);
        xmlNodePtr root = doc == nullptr ? nullptr : xmlDocGetRootElement(doc);
        if (root != nullptr && xmlStrcmp(root->name, reinterpret_cast<const xmlChar*>("ZelConfigs")) == 0) {
            files.push_back(entry.path());
        }
        xmlFreeDoc(doc);
    }
    return files;
}

TEST_F(ZelManagerConfigTest, ShippedAndExampleConfigurationsMatchTheSchemaWhichRejectsWhatTheReaderWouldDrop)
{
    ConfigSchema schema;
    ASSERT_TRUE(schema.Loaded());
    for (const auto& file : ShippedConfigurations()) {
        EXPECT_EQ(schema.ValidateFile(file), "") << file;
    }

    EXPECT_EQ(schema.ValidateText(Document("<powermode>60 120</powermode>")), "");
    for (const char* item : {
             "<supportResolutionChange enable=\"TRUE\"/>",
             "<supperGameFpsSolution/>",
             "<powermode>60  120</powermode>",
             "<powermode>60 120 </powermode>",
             "<highLevel>1200 2600 abc</highLevel>",
             "<highLevel>1200 2600</highLevel>",
             "<defaultResolutionMode>4</defaultResolutionMode>",
             "<maxCallbackSize>-1 5</maxCallbackSize>",
             "<sceneConfig><zel name=\"S_DDN\"/></sceneConfig>",
             "<sceneConfig><zel name=\"S_DDN\" interruptible=\"true\"/></sceneConfig>",
             "<sceneConfig><zel name=\"A\" interruptible=\"1\"/><zel name=\"A\" interruptible=\"0\"/></sceneConfig>",
             "<sceneConfig><scene name=\"A\" interruptible=\"1\"/></sceneConfig>",
             "<supportResolutionChang enable=\"true\"/>",
         }) {
        EXPECT_NE(schema.ValidateText(Document(item)), "") << item;
    }
}

}  // namespace
}  // namespace Tarvo::Vantel
