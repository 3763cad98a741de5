// What the service decides at start from its tables, reader by reader in the order it calls them;
// a list of the wrong length for its reader is told here, where the reader refuses it.

#include <algorithm>

#include "config_check_parts.h"

namespace Tarvo::Emu::ConfigCheckParts {
namespace {
using NumberList = Stored<std::vector<int32_t>>;

constexpr const char* DEFAULT_BOUNDS = "start: default game callback bounds: 1000 packages, 5 callbacks per package";
constexpr const char* GAME_OFF = "start: game feature off, game registrations are refused";
constexpr const char* DEFAULT_POWER = "start: power-save votes 120 in every mode (the default)";
constexpr const char* NO_BRIGHTNESS = "start: no brightness listener";
constexpr const char* NO_SCENES = "start: scene catalogue empty: every scene request is refused";
constexpr const char* UNKNOWN_SCENE = "FrameRateControl findSceneInfo not exists scene";

std::string Counted(size_t count, const std::string& thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string Numbers(size_t count)
{
    return Counted(count, "number");
}

std::string Joined(const std::vector<int32_t>& values)
{
    std::string text;
    for (int32_t value : values) {
        text += (text.empty() ? "" : " ") + std::to_string(value);
    }
    return text;
}

class Teller {
public:
    Teller(const ReadTables& tables, Findings* findings) : tables_(tables), findings_(*findings) {}

    void Add(long line, std::string text) { findings_.push_back({line, std::move(text)}); }
    const Stored<bool>* Switch(const std::string& name) const { return Find(tables_.switches, name); }
    const NumberList* List(const std::string& name) const { return Find(tables_.numbers, name); }
    const ReadTables& Tables() const { return tables_; }

    // The list when it holds exactly `count` numbers; a list of another length is rejected.
    const NumberList* Exactly(const std::string& name, size_t count)
    {
        const NumberList* list = List(name);
        if (list != nullptr && list->value.size() != count) {
            Add(list->line, "rejected: " + name + " holds " + Numbers(list->value.size()) +
                                ", its reader takes exactly " + std::to_string(count));
            return nullptr;
        }
        return list;
    }

    // Numbers after the ones a reader takes.
    void Extra(const std::string& name, size_t used)
    {
        const NumberList* list = List(name);
        if (list != nullptr && list->value.size() > used) {
            Add(list->line, "ignored: " + name + " holds " + Numbers(list->value.size()) + ", the service uses " +
                                (used == 1 ? std::string("only the first") : "the first " + std::to_string(used)));
        }
    }

private:
    template <class Table>
    static const typename Table::mapped_type* Find(const Table& table, const std::string& name)
    {
        auto it = table.find(name);
        return it == table.end() ? nullptr : &it->second;
    }

    const ReadTables& tables_;
    Findings& findings_;
};

const char* LevelName(int32_t level)
{
    return level == 1 ? "lowLevel" : level == 2 ? "middleLevel" : "highLevel";
}

// Width x height as the first boot stores a level; what the list lacks is 0.
std::string LevelSize(const Teller& teller, int32_t level)
{
    const NumberList* list = teller.List(LevelName(level));
    auto at = [list](size_t i) {
        return list != nullptr && list->value.size() > i ? static_cast<uint32_t>(list->value[i]) : 0u;
    };
    return std::to_string(at(0)) + "x" + std::to_string(at(1));
}

// With no mode in the settings yet, the service checks these two and stores the defaults.
void TellFirstBoot(Teller& teller)
{
    for (const char* name : {"resolutionStyle", "defaultResolutionMode"}) {
        if (teller.List(name) == nullptr) {
            teller.Add(0, std::string("start: a first boot stores no resolution settings: ") + name + " is absent " +
                              Logs(std::string("CheckResolutionParamValid there is no ") + name + ", should return"));
            return;
        }
        teller.Extra(name, 1);
    }
    const NumberList* mode = teller.List("defaultResolutionMode");
    const std::string value = std::to_string(mode->value.front());
    if (mode->value.front() < 1 || mode->value.front() > 3) {
        teller.Add(mode->line, "start: a first boot stores no resolution settings: defaultResolutionMode " + value +
                                   " is not 1, 2 or 3 " +
                                   Logs("ConfigureResolutionMode the mode is invalidate mode=" + value));
        return;
    }
    teller.Add(mode->line, "start: a first boot stores resolution mode " + value + ", style " +
                               std::to_string(teller.List("resolutionStyle")->value.front()) + ", high " +
                               LevelSize(teller, 3) + ", middle " + LevelSize(teller, 2) + ", low " +
                               LevelSize(teller, 1));
}

// A mode is set only when its level has width, height and density, all non-zero.
void TellLevels(Teller& teller)
{
    for (int32_t level : {3, 2, 1}) {
        const std::string name = LevelName(level);
        const NumberList* list = teller.List(name);
        const std::string unusable = "start: resolution mode " + std::to_string(level) +
                                     " cannot be chosen (a request for it changes nothing): ";
        if (list == nullptr) {
            teller.Add(0, unusable + name + " is absent");
        } else if (list->value.size() < 3) {
            teller.Add(list->line,
                       "rejected: " + name + " holds " + Numbers(list->value.size()) + ", its reader takes 3");
            teller.Add(list->line, unusable + "width, height or density missing");
        } else if (std::count(list->value.begin(), list->value.begin() + 3, 0) != 0) {
            teller.Add(list->line, unusable + name + " has a 0");
        } else {
            teller.Extra(name, 3);
        }
    }
}

void TellResolution(Teller& teller)
{
    const Stored<bool>* support = teller.Switch("supportResolutionChange");
    const bool levels = teller.List("highLevel") || teller.List("middleLevel") || teller.List("lowLevel");
    if (support == nullptr || !support->value) {
        teller.Add(support != nullptr ? support->line : 0,
                   std::string("start: no resolution change support: supportResolutionChange is ") +
                       (support != nullptr ? "false " : "absent ") +
                       Logs("ConfigureResolutionMode not support Resolution Change"));
    } else {
        teller.Add(support->line,
                   "start: resolution change supported: \"zel.currunt_resolution_ratio\" is set to 1 (on a "
                   "fold-screen device the style is stored as 0 and nothing else)");
        TellFirstBoot(teller);
    }
    if ((support != nullptr && support->value) || levels) {
        TellLevels(teller);
    }
}

void TellBrightness(Teller& teller)
{
    const std::string name = "ambientBrightnessThreshold";
    const NumberList* list = teller.Exactly(name, 3);
    if (list != nullptr) {
        teller.Add(list->line, "start: brightness listener registered with the thresholds " + Joined(list->value));
        return;
    }
    const NumberList* wrong = teller.List(name);
    teller.Add(wrong != nullptr ? wrong->line : 0,
               std::string(NO_BRIGHTNESS) + (wrong != nullptr ? " " : ": " + name + " is absent ") +
                   Logs("ZelCommonAdapter RegisterBrightBrightnessListener ambient luminance configuration item does "
                        "not exist"));
}

void TellGames(Teller& teller)
{
    const std::string bounds = "maxCallbackSize";
    const NumberList* list = teller.Exactly(bounds, 2);
    const NumberList* any = teller.List(bounds);
    if (list == nullptr) {
        teller.Add(any != nullptr ? any->line : 0,
                   std::string(DEFAULT_BOUNDS) + (any ? " " : ": " + bounds + " is absent ") +
                       Logs("GameFpsPolicy::SetMaxCallbackSize no config callback size."));
    } else if (list->value[0] == 0 || list->value[1] == 0) {
        teller.Add(list->line, "rejected: " + bounds + " has a 0 " +
                                   Logs("GameFpsPolicy::SetMaxCallbackSize callback size verify faild."));
        teller.Add(list->line, DEFAULT_BOUNDS);
    } else {
        teller.Add(list->line, "start: game callback bounds: " + std::to_string(list->value[0]) + " packages, " +
                                   std::to_string(list->value[1]) + " callbacks per package");
    }
    const Stored<bool>* on = teller.Switch("supperGameFpsSolution");
    if (on == nullptr) {
        teller.Add(0, std::string(GAME_OFF) + ": supperGameFpsSolution is absent " +
                          Logs("GameFpsPolicy::SetGameFpsSwtich no config game fps swtich."));
    } else {
        teller.Add(on->line, on->value ? "start: game feature on" : GAME_OFF);
    }
}

void TellPowerAndScenes(Teller& teller)
{
    const NumberList* list = teller.Exactly("powermode", 2);
    if (list != nullptr) {
        teller.Add(list->line, "start: power-save mode 601 votes " + std::to_string(list->value[0]) +
                                   ", every other mode " + std::to_string(list->value[1]));
    } else {
        const NumberList* wrong = teller.List("powermode");
        teller.Add(wrong != nullptr ? wrong->line : 0,
                   std::string(DEFAULT_POWER) + (wrong ? "" : ": powermode is absent"));
    }
    const auto& scenes = teller.Tables().scenes;
    if (scenes.empty()) {
        teller.Add(0, std::string(NO_SCENES) + " " + Logs(UNKNOWN_SCENE));
        return;
    }
    const auto held =
        std::count_if(scenes.begin(), scenes.end(), [](const auto& scene) { return !scene.second.value; });
    teller.Add(0, "start: scene catalogue of " + Counted(scenes.size(), "scene") + ", " + std::to_string(held) +
                      " not interruptible; other scene names are refused");
}
}  // namespace

void TellStart(const ReadTables& tables, Findings* findings)
{
    Teller teller(tables, findings);
    TellResolution(teller);
    TellBrightness(teller);
    TellGames(teller);
    TellPowerAndScenes(teller);
}

void TellStartWithoutConfig(Findings* findings)
{
    findings->push_back({0,
                         "start: without a configuration only the default resolution mode is set up: "
                         "\"zel.currunt_resolution_ratio\" is set to 1 (on a fold-screen device the style is stored "
                         "as 0)"});
    for (const char* text : {NO_BRIGHTNESS, DEFAULT_BOUNDS, GAME_OFF, DEFAULT_POWER}) {
        findings->push_back({0, text});
    }
    findings->push_back({0, std::string(NO_SCENES) + " " + Logs(UNKNOWN_SCENE)});
}

}  // namespace Tarvo::Emu::ConfigCheckParts
