#include "resolution_manager.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "display_manager.h"
#include "dm_common.h"
#include "parameters.h"
#include "screen_manager.h"
#include "settings_data_helper.h"
#include "zel_log.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
constexpr const char* SUPPORT_RESOLUTION_CHANGE = "supportResolutionChange";
constexpr const char* RESOLUTION_STYLE = "resolutionStyle";
constexpr const char* DEFAULT_RESOLUTION_MODE = "defaultResolutionMode";
constexpr const char* KEY_RESOLUTION_STYLE = "settings.display.resolution_style";
constexpr const char* KEY_RESOLUTION_MODE = "settings.display.resolution_mode";
// Belongs to the display settings; nothing here reads or writes it.
[[maybe_unused]] constexpr const char* KEY_RESOLUTION_SMART_SWITCH = "settings.display.resolution_smart_switch";
constexpr const char* PARAM_RESOLUTION_RATIO = "zel.currunt_resolution_ratio";
constexpr const char* PARAM_FOLD_SCREEN_TYPE = "const.window.foldscreen.type";

bool IsValidMode(int32_t mode)
{
    return mode >= ResolutionLevel::LOW && mode <= ResolutionLevel::HIGH;
}

const char* LevelName(ResolutionLevel level)
{
    switch (level) {
        case ResolutionLevel::LOW:
            return "lowLevel";
        case ResolutionLevel::MIDDLE:
            return "middleLevel";
        default:
            return "highLevel";
    }
}

const char* LevelKey(ResolutionLevel level)
{
    switch (level) {
        case ResolutionLevel::LOW:
            return "settings.display.resolution_low";
        case ResolutionLevel::MIDDLE:
            return "settings.display.resolution_middle";
        default:
            return "settings.display.resolution_high";
    }
}

// Read as a decimal int would be: leading blanks and a sign are taken and the digits end at the first
// other character ("2x" is 2). Only a row without a leading number or beyond the int range is refused.
bool ParseMode(const std::string& text, int32_t& mode)
{
    errno = 0;
    char* end = nullptr;
    long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || errno == ERANGE || value < INT32_MIN || value > INT32_MAX) {
        return false;
    }
    mode = static_cast<int32_t>(value);
    return true;
}

int32_t FirstNumber(const ResolutionManager::NumbersConfig& numbers, const char* name)
{
    auto it = numbers.find(name);
    if (it == numbers.end() || it->second.empty()) {
        return 0;
    }
    return it->second.front();
}
}  // namespace

ResolutionManager* ResolutionManager::GetInstance()
{
    static ResolutionManager instance;
    return &instance;
}

ResolutionManager::ResolutionManager() : eventHandle_(EventHandle::GetInstance())
{
    ZEL_LOGI("ResolutionManager init");
}

void ResolutionManager::ConfigureResolutionMode()
{
    NumbersConfig numbers = ZelManagerConfig::GetIntNumbersConfig();
    std::map<std::string, bool> switches = ZelManagerConfig::GetEnableConfig();
    auto support = switches.find(SUPPORT_RESOLUTION_CHANGE);
    if (support == switches.end() || !support->second) {
        ZEL_LOGW("ConfigureResolutionMode not support Resolution Change");
        return;
    }
    auto helper = std::make_unique<SettingsDataHelper>();
    system::SetParameter(PARAM_RESOLUTION_RATIO, "1");
    if (!system::GetParameter(PARAM_FOLD_SCREEN_TYPE, "").empty()) {
        ZEL_LOGI("ConfigureResolutionMode don't process the fold screen type, should return");
        RememberStyle(0, helper->Insert(KEY_RESOLUTION_STYLE, "0"));
        return;
    }
    std::string stored;
    if (helper->Query(KEY_RESOLUTION_MODE, stored) == -1 && configureRetryTimes_ <= CONFIGURE_RETRY_LIMIT) {
        ZEL_LOGI("ConfigureResolutionMode settings database hasn't initialized, retry times is %d",
                 configureRetryTimes_);
        InitSettingsDataRetry(configureRetryTimes_);
        return;
    }
    helper.reset();
    if (!stored.empty()) {
        int32_t storedMode = 0;
        if (ParseMode(stored, storedMode)) {
            SetResolutionMode(storedMode, 0);
            ZEL_LOGI("ConfigureResolutionMode resolutionMode is not empty,should return");
            return;
        }
        // A broken row must not stop the service; fall back to the configured default.
        ZEL_LOGW("ConfigureResolutionMode resolutionMode is not a number: %{public}s", stored.c_str());
    }
    if (CheckResolutionParamValid(numbers) == -1) {
        return;
    }
    int32_t defaultMode = FirstNumber(numbers, DEFAULT_RESOLUTION_MODE);
    ZEL_LOGI("ConfigureResolutionMode defaultResolutionMode is %d", defaultMode);
    if (!IsValidMode(defaultMode)) {
        ZEL_LOGW("ConfigureResolutionMode the mode is invalidate mode=%d", defaultMode);
        return;
    }
    ZEL_LOGI("ConfigureResolutionMode resolutionMode hasn't been set, use default resolutionMode");
    SetResolutionMode(defaultMode, 0);
    SetInitialDatabaseValue(numbers);
}

int32_t ResolutionManager::CheckResolutionParamValid(NumbersConfig numbers)
{
    if (numbers.find(RESOLUTION_STYLE) == numbers.end()) {
        ZEL_LOGI("CheckResolutionParamValid there is no resolutionStyle, should return");
        return -1;
    }
    if (numbers.find(DEFAULT_RESOLUTION_MODE) == numbers.end()) {
        ZEL_LOGI("CheckResolutionParamValid there is no defaultResolutionMode, should return");
        return -1;
    }
    return 0;
}

void ResolutionManager::SetInitialDatabaseValue(NumbersConfig numbers)
{
    SettingsDataHelper helper;
    int32_t style = FirstNumber(numbers, RESOLUTION_STYLE);
    int32_t ret = helper.Insert(KEY_RESOLUTION_STYLE, std::to_string(style));
    RememberStyle(style, ret);
    if (ret == -1 && databaseRetryTimes_ < DATABASE_RETRY_LIMIT) {
        ZEL_LOGI("SetInitialDatabaseValue settings database hasn't initialized, retry times is %d",
                 databaseRetryTimes_);
        SetSettingsDataRetry(databaseRetryTimes_, numbers);
        return;
    }
    // The last attempt only inserts the style, even when it succeeds.
    if (databaseRetryTimes_ == DATABASE_RETRY_LIMIT) {
        ZEL_LOGI("SetInitialDatabaseValue system error, the settings database cannot initialized");
        return;
    }
    int32_t defaultMode = FirstNumber(numbers, DEFAULT_RESOLUTION_MODE);
    ZEL_LOGI("SetInitialDatabaseValue defaultResolutionMode is %d", defaultMode);
    int32_t updated = helper.Update(KEY_RESOLUTION_MODE, std::to_string(defaultMode));
    RememberMode(defaultMode, updated);
    for (ResolutionLevel level : {ResolutionLevel::HIGH, ResolutionLevel::MIDDLE, ResolutionLevel::LOW}) {
        uint32_t width = 0;
        uint32_t height = 0;
        uint32_t density = 0;
        GetResolutionParamsByMode(level, width, height, density);
        (void)helper.Insert(LevelKey(level), std::to_string(width) + "x" + std::to_string(height));
    }
    ZEL_LOGI("SetInitialDatabaseValue init settings database success");
}

void ResolutionManager::InitSettingsDataRetry(int32_t& retryTimes)
{
    {
        std::lock_guard<std::mutex> lock(stateLock_);
        retryTimes++;
    }
    eventHandle_->DelayTask([this]() { ConfigureResolutionMode(); }, CONFIGURE_RETRY_DELAY_MS);
}

void ResolutionManager::SetSettingsDataRetry(int32_t& retryTimes, NumbersConfig numbers)
{
    {
        std::lock_guard<std::mutex> lock(stateLock_);
        retryTimes++;
    }
    eventHandle_->DelayTask([this, numbers]() { SetInitialDatabaseValue(numbers); }, DATABASE_RETRY_DELAY_MS);
}

void ResolutionManager::SetResolutionMode(int32_t mode, int32_t /* flag */)
{
    if (!IsValidMode(mode)) {
        ZEL_LOGW("SetResolutionMode the mode is invalidate mode=%d", mode);
        return;
    }
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t density = 0;
    GetResolutionParamsByMode(static_cast<ResolutionLevel>(mode), width, height, density);
    if (width == 0 || height == 0 || density == 0) {
        return;
    }
    SettingsDataHelper helper;
    int32_t ret = helper.Update(KEY_RESOLUTION_MODE, std::to_string(mode));
    RememberMode(mode, ret);
    ZEL_LOGW("SetResolutionMode Update mode=%d result=%d", mode, ret);
}

void ResolutionManager::GetResolutionParamsByMode(ResolutionLevel level, uint32_t& width, uint32_t& height,
                                                  uint32_t& density)
{
    if (!IsValidMode(level)) {
        return;
    }
    const char* name = LevelName(level);
    NumbersConfig numbers = ZelManagerConfig::GetIntNumbersConfig();
    auto it = numbers.find(name);
    // Three numbers are required; a shorter list still yields zeros instead of reading past it.
    if (it != numbers.end()) {
        const std::vector<int32_t>& values = it->second;
        width = values.size() > 0 ? static_cast<uint32_t>(values[0]) : 0;
        height = values.size() > 1 ? static_cast<uint32_t>(values[1]) : 0;
        density = values.size() > 2 ? static_cast<uint32_t>(values[2]) : 0;
        ZEL_LOGI("GetResolutionParamsByMode success! mode=%s width=%d, height=%d, density=%d", name, width, height,
                 density);
        return;
    }
    width = 0;
    height = 0;
    density = 0;
    ZEL_LOGI("GetResolutionParamsByMode failed!  mode=%s width=%d, height=%d, density=%d", name, width, height,
             density);
}

void ResolutionManager::SetResolution(uint32_t width, uint32_t height, uint32_t density)
{
    ZEL_LOGI("SetResolution width=%d, height=%d, density=%d", width, height, density);
    DisplayId defaultId = DisplayManager::GetInstance().GetDefaultDisplayId();
    if (defaultId == DISPLAY_ID_INVALID) {
        ZEL_LOGW("SetResolution defaultId is invalid");
        return;
    }
    // The display id doubles as the screen id on this platform.
    sptr<Screen> screen = ScreenManager::GetInstance().GetScreenById(defaultId);
    if (screen == nullptr) {
        ZEL_LOGW("SetResolution screen not found, screenId is: %lu", static_cast<unsigned long>(defaultId));
        return;
    }
    DMError ret = screen->SetResolution(width, height, density);
    ZEL_LOGI("screen->SetResolution complete return code is %d", static_cast<int32_t>(ret));
}

void ResolutionManager::InitDefaultResolutionMode()
{
    SettingsDataHelper helper;
    system::SetParameter(PARAM_RESOLUTION_RATIO, "1");
    if (!system::GetParameter(PARAM_FOLD_SCREEN_TYPE, "").empty()) {
        int32_t ret = helper.Insert(KEY_RESOLUTION_STYLE, "0");
        GetInstance()->RememberStyle(0, ret);
        ZEL_LOGI("InitDefaultResolutionMode after Insert ret=%d", ret);
    }
}

void ResolutionManager::RememberMode(int32_t mode, int32_t result)
{
    std::lock_guard<std::mutex> lock(stateLock_);
    mode_ = mode;
    modeResult_ = result;
}

void ResolutionManager::RememberStyle(int32_t style, int32_t result)
{
    if (result != 0) {
        return;
    }
    std::lock_guard<std::mutex> lock(stateLock_);
    style_ = style;
}

ResolutionManager::State ResolutionManager::DumpState()
{
    std::lock_guard<std::mutex> lock(stateLock_);
    return State{mode_, modeResult_, style_, configureRetryTimes_, databaseRetryTimes_};
}

}  // namespace Tarvo::Vantel
