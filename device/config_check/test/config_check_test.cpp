#include "config_check.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace Tarvo::Emu {
namespace {

class ConfigCheckTest : public testing::Test {
protected:
    // Other test processes share the temporary folder.
    std::string Write(const std::string& text)
    {
        written_.push_back(testing::TempDir() + "/config_check_" + std::to_string(getpid()) + "_" +
                           std::to_string(written_.size()) + ".xml");
        std::ofstream(written_.back(), std::ios::binary) << text;
        return written_.back();
    }

    // ZelConfigs holding body, whose first line is line 3.
    std::string Config(const std::string& body)
    {
        return Write("<?xml version=\"1.0\"?>\n<ZelConfigs>\n" + body + "\n</ZelConfigs>\n");
    }

    void TearDown() override
    {
        for (const std::string& path : written_) {
            std::remove(path.c_str());
        }
    }

    std::vector<std::string> written_;
};

std::vector<std::string> Formatted(const ConfigCheck& check)
{
    std::vector<std::string> lines;
    for (const ConfigFinding& finding : check.findings) {
        lines.push_back(FormatFinding(finding));
    }
    return lines;
}

// The findings of the reading: neither the schema's, nor those of the start, nor the result.
std::vector<std::string> Reading(const ConfigCheck& check)
{
    std::vector<std::string> lines;
    for (const ConfigFinding& finding : check.findings) {
        if (finding.text.starts_with("start:")) {
            break;
        }
        if (!finding.text.starts_with("schema")) {
            lines.push_back(FormatFinding(finding));
        }
    }
    return lines;
}

// From the first decision at start up to the result, which is left out.
std::vector<std::string> Start(const ConfigCheck& check)
{
    std::vector<std::string> lines = Formatted(check);
    auto first = std::find_if(lines.begin(), lines.end(),
                              [](const std::string& line) { return line.find(": start: ") != std::string::npos; });
    lines.erase(lines.begin(), first);
    lines.pop_back();
    return lines;
}

std::string Logs(const std::string& message)
{
    return " (the service logs \"" + message + "\")";
}

const std::string INVALID = Logs("ZelConfig]: invalid node!");
const std::string NO_SCENES = "-: start: scene catalogue empty: every scene request is refused" +
                              Logs("FrameRateControl findSceneInfo not exists scene");

TEST_F(ConfigCheckTest, TheDefaultConfigurationLoadsWithEverythingRead)
{
    const ConfigCheck check = CheckConfigFile(ZEL_DEFAULT_CONFIG);
    std::vector<std::string> expected = {
        "-: schema: valid",
        "14: read into the switch table: supportResolutionChange = true",
        "15: read into the switch table: supperGameFpsSolution = true",
        "16: read into the number-list table: resolutionStyle = 1",
        "17: read into the number-list table: defaultResolutionMode = 3",
        "18: read into the number-list table: highLevel = 1200 2600 540",
        "19: read into the number-list table: middleLevel = 900 1950 405",
        "20: read into the number-list table: lowLevel = 600 1300 270",
        "21: read into the number-list table: maxCallbackSize = 1000 5",
        "22: read into the number-list table: powermode = 60 120",
        "23: read into the number-list table: ambientBrightnessThreshold = 100 200 300",
    };
    int line = 25;
    for (const char* scene :
         {"BACK_DESKTOP", "FOLLOW_HAND", "S_DDN", "BACK_ORIGIN_APP", "START_APP_FROM_MULTIPLE_TASKBARS",
          "BACK_MULTIPLE_TASKBARS", "START_APP_FROM_DESKTOP", "SCREEN_UNLOCK", "ENTER_MULTIPLE_TASKBARS",
          "APP_LIST_FLING", "DESKTOP_PAGE_SWIPE", "NOTIFICATION_PANEL_PULL", "CONTROL_CENTER_PULL", "FOLDER_OPEN",
          "FOLDER_CLOSE", "ROTATION"}) {
        expected.push_back(std::to_string(line) + ": read into the scene catalogue: \"" + scene + "\", " +
                           (line < 33 ? "not interruptible" : "interruptible"));
        ++line;
    }
    expected.insert(
        expected.end(),
        {"14: start: resolution change supported: \"zel.currunt_resolution_ratio\" is set to 1 (on a fold-screen "
         "device the style is stored as 0 and nothing else)",
         "17: start: a first boot stores resolution mode 3, style 1, high 1200x2600, middle 900x1950, low 600x1300",
         "23: start: brightness listener registered with the thresholds 100 200 300",
         "21: start: game callback bounds: 1000 packages, 5 callbacks per package", "15: start: game feature on",
         "22: start: power-save mode 601 votes 60, every other mode 120",
         "-: start: scene catalogue of 16 scenes, 8 not interruptible; other scene names are refused",
         "-: result: the service loads this file"});
    EXPECT_TRUE(check.loads);
    EXPECT_EQ(Formatted(check), expected);
}

TEST_F(ConfigCheckTest, EachNodeIsReadIgnoredOrRejectedAsTheServiceDoes)
{
    const std::string numberError = Logs("[ZelConfig] read number error: nodeName:(powermode)");
    const std::string scenesError = Logs("[ZelConfig] read xml node error: nodeName:(sceneConfig)");
    const struct {
        std::string body;
        std::vector<std::string> expected;
    } cases[] = {
        {"<!-- a note -->\n<![CDATA[60 120]]>\nstray <powerMode>60 120</powerMode>\n<?powermode 45 90?>",
         {"3: ignored: a comment in ZelConfigs" + INVALID, "4: ignored: a CDATA section in ZelConfigs" + INVALID,
          "5: ignored: text \"\\x0astray \" in ZelConfigs",
          "5: ignored: element \"powerMode\" in ZelConfigs: the service has no reader for it; names are "
          "case-sensitive: \"powermode\"?",
          "6: read into the number-list table: powermode = 45 90"}},
        {"<supportResolutionChange enable=\"TRUE\"/>\n<supperGameFpsSolution/>\n"
         "<supperGameFpsSolution enable=\"true\"/><supperGameFpsSolution enable=\"false\"/>",
         {"3: read into the switch table: supportResolutionChange = false (\"TRUE\" is not the exact word \"true\")",
          "4: rejected: supperGameFpsSolution has no \"enable\" attribute, the element is skipped" +
              Logs("[ZelConfig] read xml node error: nodeName:(supperGameFpsSolution)"),
          "5: read into the switch table: supperGameFpsSolution = true",
          "5: read into the switch table: supperGameFpsSolution = false; replaces line 5"}},
        {"<powermode>60 abc</powermode>\n<powermode>60  120</powermode>\n<powermode> 60</powermode>\n"
         "<powermode>99999999999 1</powermode>\n<powermode>-1 +1</powermode>\n<powermode>60\n120</powermode>\n"
         "<powermode></powermode>\n<powermode>0060 2147483647</powermode>\n<powermode>1 2 3</powermode>",
         {"3: rejected: powermode: \"abc\" is not a number, the element is skipped" + numberError,
          "4: rejected: powermode: an empty number (a leading, trailing or doubled space), the element is skipped" +
              numberError,
          "5: rejected: powermode: an empty number (a leading, trailing or doubled space), the element is skipped" +
              numberError,
          "6: rejected: powermode: \"99999999999\" is beyond the signed 32-bit range, the element is skipped" +
              numberError,
          "7: rejected: powermode: \"-1\" is not a number, the element is skipped" + numberError,
          "8: rejected: powermode: \"60\\x0a120\" is not a number (numbers take single spaces, on one line), the "
          "element is skipped" +
              numberError,
          "10: ignored: powermode is empty, the element is skipped (the service logs nothing)",
          "11: read into the number-list table: powermode = 60 2147483647",
          "12: read into the number-list table: powermode = 1 2 3; replaces line 11"}},
        {"<sceneConfig>\n<zel name=\"A\" interruptible=\"1\"/>\n<!-- off -->\n<scene name=\"B\" interruptible=\"0\"/>\n"
         "<zel name=\"C\" interruptible=\"yes\"/>\n<zel name=\"A\" interruptible=\"0\"/>\n<zel name=\"D\"/>\n"
         "<zel name=\"E\" interruptible=\"1\"/>\n</sceneConfig>\n<sceneConfig><zel interruptible=\"1\"/></sceneConfig>",
         {"4: read into the scene catalogue: \"A\", interruptible", "5: ignored: a comment in sceneConfig" + INVALID,
          "6: ignored: element \"scene\" in sceneConfig",
          "7: read into the scene catalogue: \"C\", not interruptible (\"yes\" is not \"1\")",
          "8: read into the scene catalogue: \"A\", not interruptible; replaces line 4",
          "9: rejected: a scene entry without \"interruptible\", it and the rest of sceneConfig are skipped" +
              scenesError,
          "10: ignored: element \"zel\": sceneConfig was abandoned at line 9",
          "12: rejected: a scene entry without \"name\", it and the rest of sceneConfig are skipped" + scenesError}},
    };
    for (const auto& c : cases) {
        const ConfigCheck check = CheckConfigFile(Config(c.body));
        EXPECT_TRUE(check.loads) << c.body;
        EXPECT_EQ(Reading(check), c.expected) << c.body;
    }
}

TEST_F(ConfigCheckTest, TheStartFollowsWhatEachReaderAccepts)
{
    const std::string noSupport = " (the service logs \"ConfigureResolutionMode not support Resolution Change\")";
    const std::string noBrightness =
        Logs("ZelCommonAdapter RegisterBrightBrightnessListener ambient luminance configuration item does not exist");
    const std::string noBounds = Logs("GameFpsPolicy::SetMaxCallbackSize no config callback size.");
    const std::string supported =
        "3: start: resolution change supported: \"zel.currunt_resolution_ratio\" is set to 1 (on a fold-screen device "
        "the style is stored as 0 and nothing else)";
    const std::string unusable = ": start: resolution mode ";
    const std::string change = " cannot be chosen (a request for it changes nothing): ";
    const std::string brightnessAbsent =
        "-: start: no brightness listener: ambientBrightnessThreshold is absent" + noBrightness;
    const std::string boundsAbsent =
        "-: start: default game callback bounds: 1000 packages, 5 callbacks per package: maxCallbackSize is absent" +
        noBounds;
    const std::string gameAbsent =
        "-: start: game feature off, game registrations are refused: supperGameFpsSolution is absent" +
        Logs("GameFpsPolicy::SetGameFpsSwtich no config game fps swtich.");
    const std::string powerAbsent = "-: start: power-save votes 120 in every mode (the default): powermode is absent";
    const struct {
        std::string body;
        std::vector<std::string> expected;
    } cases[] = {
        {"",
         {"-: start: no resolution change support: supportResolutionChange is absent" + noSupport, brightnessAbsent,
          boundsAbsent, gameAbsent, powerAbsent, NO_SCENES}},
        {"<supportResolutionChange enable=\"true\"/>\n<supperGameFpsSolution enable=\"false\"/>\n"
         "<resolutionStyle>2 9</resolutionStyle>\n<defaultResolutionMode>4</defaultResolutionMode>\n"
         "<highLevel>1200 2600 540 1</highLevel>\n<middleLevel>900 0 405</middleLevel>\n<lowLevel>600 1300</lowLevel>\n"
         "<maxCallbackSize>0 5</maxCallbackSize>\n<powermode>60</powermode>\n"
         "<ambientBrightnessThreshold>100 200</ambientBrightnessThreshold>\n"
         "<sceneConfig><zel name=\"A\" interruptible=\"1\"/></sceneConfig>",
         {supported, "5: ignored: resolutionStyle holds 2 numbers, the service uses only the first",
          "6: start: a first boot stores no resolution settings: defaultResolutionMode 4 is not 1, 2 or 3" +
              Logs("ConfigureResolutionMode the mode is invalidate mode=4"),
          "7: ignored: highLevel holds 4 numbers, the service uses the first 3",
          "8" + unusable + "2" + change + "middleLevel has a 0",
          "9: rejected: lowLevel holds 2 numbers, its reader takes 3",
          "9" + unusable + "1" + change + "width, height or density missing",
          "12: rejected: ambientBrightnessThreshold holds 2 numbers, its reader takes exactly 3",
          "12: start: no brightness listener" + noBrightness,
          "10: rejected: maxCallbackSize has a 0" +
              Logs("GameFpsPolicy::SetMaxCallbackSize callback size verify faild."),
          "10: start: default game callback bounds: 1000 packages, 5 callbacks per package",
          "4: start: game feature off, game registrations are refused",
          "11: rejected: powermode holds 1 number, its reader takes exactly 2",
          "11: start: power-save votes 120 in every mode (the default)",
          "-: start: scene catalogue of 1 scene, 0 not interruptible; other scene names are refused"}},
        {"<supportResolutionChange enable=\"true\"/>\n<defaultResolutionMode>2</defaultResolutionMode>\n"
         "<maxCallbackSize>10 2 1</maxCallbackSize>\n<powermode>0 90</powermode>\n"
         "<ambientBrightnessThreshold>3 2 1</ambientBrightnessThreshold>",
         {supported,
          "-: start: a first boot stores no resolution settings: resolutionStyle is absent" +
              Logs("CheckResolutionParamValid there is no resolutionStyle, should return"),
          "-" + unusable + "3" + change + "highLevel is absent",
          "-" + unusable + "2" + change + "middleLevel is absent", "-" + unusable + "1" + change + "lowLevel is absent",
          "7: start: brightness listener registered with the thresholds 3 2 1",
          "5: rejected: maxCallbackSize holds 3 numbers, its reader takes exactly 2",
          "5: start: default game callback bounds: 1000 packages, 5 callbacks per package" + noBounds, gameAbsent,
          "6: start: power-save mode 601 votes 0, every other mode 90", NO_SCENES}},
        {"<supportResolutionChange enable=\"false\"/>\n<middleLevel>900 1950 405</middleLevel>\n"
         "<resolutionStyle>7</resolutionStyle><defaultResolutionMode>1</defaultResolutionMode>"
         "<maxCallbackSize>3 2</maxCallbackSize>",
         {"3: start: no resolution change support: supportResolutionChange is false" + noSupport,
          "-" + unusable + "3" + change + "highLevel is absent", "-" + unusable + "1" + change + "lowLevel is absent",
          brightnessAbsent, "5: start: game callback bounds: 3 packages, 2 callbacks per package", gameAbsent,
          powerAbsent, NO_SCENES}},
        {"<supportResolutionChange enable=\"true\"/><resolutionStyle>0</resolutionStyle>\n"
         "<defaultResolutionMode>1</defaultResolutionMode><lowLevel>600 1300 270</lowLevel>",
         {supported, "4: start: a first boot stores resolution mode 1, style 0, high 0x0, middle 0x0, low 600x1300",
          "-" + unusable + "3" + change + "highLevel is absent",
          "-" + unusable + "2" + change + "middleLevel is absent", brightnessAbsent, boundsAbsent, gameAbsent,
          powerAbsent, NO_SCENES}},
    };
    for (const auto& c : cases) {
        const ConfigCheck check = CheckConfigFile(Config(c.body));
        EXPECT_TRUE(check.loads) << c.body;
        EXPECT_EQ(Start(check), c.expected) << c.body;
        EXPECT_EQ(FormatFinding(check.findings.back()), "-: result: the service loads this file") << c.body;
    }
}

TEST_F(ConfigCheckTest, TheSchemaIsToldFirstAndDoesNotDecideLoading)
{
    const ConfigCheck check = CheckConfigFile(Config("<powermode>60</powermode>\n<extra/>"));
    EXPECT_TRUE(check.loads);
    ASSERT_GE(check.findings.size(), 2u);
    EXPECT_EQ(FormatFinding(check.findings[0]),
              "3: schema: Element 'powermode': [facet 'pattern'] The value '60' is not accepted by the pattern "
              "'[0-9]{1,10} [0-9]{1,10}'.");
    EXPECT_EQ(FormatFinding(check.findings[1]), "4: schema: Element 'extra': This element is not expected.");
    EXPECT_EQ(FormatFinding(check.findings[2]), "3: read into the number-list table: powermode = 60");

    const ConfigCheck unvalidated = CheckConfigFile(ZEL_DEFAULT_CONFIG, "/nonexistent/schema.xsd");
    EXPECT_TRUE(unvalidated.loads);
    std::vector<std::string> schema = Formatted(unvalidated);
    schema.resize(3);
    EXPECT_EQ(schema, (std::vector<std::string>{
                          "-: xml warning: failed to load external entity \"/nonexistent/schema.xsd\"",
                          "-: schema file: Failed to locate the main schema resource at '/nonexistent/schema.xsd'.",
                          "-: schema file: cannot use /nonexistent/schema.xsd, the file is not validated"}));
    EXPECT_EQ(Formatted(unvalidated)[3], "14: read into the switch table: supportResolutionChange = true");
}

TEST_F(ConfigCheckTest, FilesTheServiceRefusesLoadNothing)
{
    const std::string loadError = Logs("[ZelConfig] load xml error!");
    std::string big = "<ZelConfigs/>";
    big.resize(1024 * 1024 + 1, ' ');
    const struct {
        std::string path;
        std::vector<std::string> expected;
    } cases[] = {
        {"/nonexistent/zel.xml", {"-: rejected: cannot open the file: No such file or directory" + loadError}},
        {testing::TempDir(), {"-: rejected: not a regular file" + loadError}},
        {Write(""), {"-: rejected: the file is empty" + loadError}},
        {Write(big),
         {"-: rejected: 1048577 bytes, over the limit of 1048576" +
          Logs("[ZelConfig] config file is bigger than 1048576 bytes")}},
        {Write("<ZelConfigs>\n<powermode>60 120</powermode>\n"),
         {"3: xml error: Premature end of data in tag ZelConfigs line 1",
          "-: rejected: not well-formed XML" + loadError}},
        {Write("<?xml version=\"1.0\"?>\n<!-- a <!DOCTYPE in a comment is no declaration -->\n<!DOCTYPE ZelConfigs [\n"
               "<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>\n<ZelConfigs>&b;</ZelConfigs>\n"),
         {"3: rejected: a document type declaration" +
          Logs("[ZelConfig] config file has a document type declaration")}},
        {Write("<zelConfigs/>"),
         {"1: schema: Element 'zelConfigs': No matching global declaration available for the validation root.",
          "1: rejected: the root element is \"zelConfigs\", not \"ZelConfigs\"" +
              Logs("[ZelConfig] get root element failed!")}},
    };
    const std::vector<std::string> start = {
        "-: start: without a configuration only the default resolution mode is set up: "
        "\"zel.currunt_resolution_ratio\" is set to 1 (on a fold-screen device the style is stored as 0)",
        "-: start: no brightness listener",
        "-: start: default game callback bounds: 1000 packages, 5 callbacks per package",
        "-: start: game feature off, game registrations are refused",
        "-: start: power-save votes 120 in every mode (the default)",
        NO_SCENES,
        "-: result: the service does not load this file and starts without a configuration"};
    for (const auto& c : cases) {
        const ConfigCheck check = CheckConfigFile(c.path);
        EXPECT_FALSE(check.loads) << c.path;
        std::vector<std::string> expected = c.expected;
        expected.insert(expected.end(), start.begin(), start.end());
        EXPECT_EQ(Formatted(check), expected) << c.path;
    }
    big.resize(1024 * 1024);
    EXPECT_TRUE(CheckConfigFile(Write(big)).loads);
}

}  // namespace
}  // namespace Tarvo::Emu
