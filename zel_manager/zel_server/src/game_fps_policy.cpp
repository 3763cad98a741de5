#include "game_fps_policy.h"

#include <utility>

#include "category_manager.h"
#include "zel_log.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
constexpr int32_t RESULT_OK = 0;
constexpr int32_t RESULT_REFUSED = 1;
constexpr int32_t QUERY_FAILED = 5;
constexpr int32_t CALLBACK_DELIVERED = 0;
constexpr int32_t CALLBACK_CLIENT_DEAD = 6;
constexpr uint32_t CALLBACK_RETRY_TIMES = 3;
constexpr int64_t CALLBACK_RETRY_DELAY_MS = 2000;
constexpr int64_t QUERY_RETRY_DELAY_MS = 5000;
constexpr uint32_t ADDED_APP_QUERY_TIMES = 3;
constexpr int32_t PACKAGE_TYPE_GAME = 2;
constexpr size_t CALLBACK_SIZE_CONFIG_LEN = 2;
constexpr const char* RETRY_EVENT_PREFIX = "GAME_FPS_CALLBACK_RETRY";
constexpr const char* GAME_FPS_SWITCH_KEY = "supperGameFpsSolution";
constexpr const char* CALLBACK_SIZE_KEY = "maxCallbackSize";
constexpr const char* CATEGORY_CALLER = "ZEL_MANAGER";

std::string RetryEventName(const std::string& pkgName)
{
    return RETRY_EVENT_PREFIX + pkgName;
}

// Promoted references go to `held`, so that the last one is dropped after the registry lock.
std::vector<bool> Liveness(const GameFpsPolicy::CallbackList& callbacks, std::vector<sptr<IZelCallbackInterface>>& held)
{
    std::vector<bool> alive;
    for (const auto& weak : callbacks) {
        sptr<IZelCallbackInterface> callback = weak.promote();
        sptr<IRemoteObject> object = callback != nullptr ? callback->AsObject() : nullptr;
        alive.push_back(object != nullptr && !object->IsObjectDead());
        held.push_back(callback);
    }
    return alive;
}
}  // namespace

GameFpsPolicy* GameFpsPolicy::GetInstance()
{
    static GameFpsPolicy instance;
    return &instance;
}

GameFpsPolicy::GameFpsPolicy() : mEventHandle(EventHandle::GetInstance()) {}

int32_t GameFpsPolicy::RegisterGameFpsListener(std::string pkgName, sptr<IZelCallbackInterface>& callback)
{
    if (!mGameFpsSwitch) {
        ZEL_LOGI("GameFpsPolicy RegisterGameFpsListener] The solution is not enabled,Check configuration file.");
        return RESULT_REFUSED;
    }
    if (callback == nullptr || pkgName.empty()) {
        ZEL_LOGE("GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = %{public}s", pkgName.c_str());
        return RESULT_REFUSED;
    }
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    if (mGamePkgSet.count(pkgName) == 0) {
        if (mQueryingPkgSet.count(pkgName) != 0) {
            ZEL_LOGI("GameFpsPolicy RegisterGameFpsListener pkgName = %{public}s is querying", pkgName.c_str());
            AddToCallbackCache(pkgName, callback);
            return RESULT_OK;
        }
        ZEL_LOGW("GameFpsPolicy RegisterGameFpsListener package name is not game, pkgName = %{public}s",
                 pkgName.c_str());
        return RESULT_REFUSED;
    }
    if (mCallbackMap.size() > mMaxPkgSize) {
        ZEL_LOGW("GameFpsPolicy RegisterGameFpsListener The package name storage is full.");
        return RESULT_REFUSED;
    }
    CallbackList& callbacks = mCallbackMap[pkgName];
    if (callbacks.size() > mMaxCallbackSize) {
        callbacks.erase(callbacks.begin());
    }
    callbacks.emplace_back(callback);
    ZEL_LOGI("GameFpsPolicy RegisterGameFpsListener register success, pkgName = %{public}s", pkgName.c_str());
    NotifyGameFpsChange(pkgName);
    return RESULT_OK;
}

void GameFpsPolicy::AddToCallbackCache(std::string pkgName, sptr<IZelCallbackInterface> callback)
{
    if (mCallbackCache.size() > mMaxPkgSize) {
        // Only a warning: the callback is parked all the same.
        ZEL_LOGE("GameFpsPolicy::AddToCallbackCache cache overflow, discard callback pkgName = %{public}s",
                 pkgName.c_str());
    }
    auto entry = mCallbackCache.find(pkgName);
    if (entry == mCallbackCache.end()) {
        mCallbackCache[pkgName] = CallbackList{wptr<IZelCallbackInterface>(callback)};
        return;
    }
    if (entry->second.size() > mMaxCallbackSize) {
        // The lowest-sorting package gives way, whichever it is.
        mCallbackCache.erase(mCallbackCache.begin());
    }
    ZEL_LOGI("GameFpsPolicy::AddToCallbackCache pkgName = %{public}s save cache success.", pkgName.c_str());
    mCallbackCache[pkgName].emplace_back(callback);
}

void GameFpsPolicy::RestoreCacheCallback(std::string pkgName)
{
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    mQueryingPkgSet.erase(pkgName);
    if (mGamePkgSet.count(pkgName) == 0) {
        ZEL_LOGI("GameFpsPolicy::RestoreCacheCallback pkgName = %{public}s no game, remove callback cache",
                 pkgName.c_str());
        mCallbackCache.erase(pkgName);
        return;
    }
    auto entry = mCallbackCache.find(pkgName);
    if (entry == mCallbackCache.end()) {
        ZEL_LOGI("GameFpsPolicy::RestoreCacheCallback pkgName = %{public}s no callback to restore.", pkgName.c_str());
        return;
    }
    // Registering may touch the cache, so walk a copy.
    CallbackList parked = entry->second;
    for (const auto& weak : parked) {
        sptr<IZelCallbackInterface> callback = weak.promote();
        if (callback != nullptr) {
            RegisterGameFpsListener(pkgName, callback);
        }
    }
    mCallbackCache.erase(pkgName);
    ZEL_LOGI("GameFpsPolicy::RestoreCacheCallback pkgName = %{public}s restore success.", pkgName.c_str());
}

int32_t GameFpsPolicy::NotifyGameFpsChange(std::string pkgName)
{
    auto callbacks = mCallbackMap.find(pkgName);
    auto target = mGameFpsMap.find(pkgName);
    if (callbacks == mCallbackMap.end() || target == mGameFpsMap.end()) {
        ZEL_LOGD("GameFpsPolicy::NotifyGameFpsChange, pkgName = %{public}s, callback is not found.", pkgName.c_str());
        return RESULT_OK;
    }
    uint32_t fps = target->second;
    CallbackList pending = callbacks->second;
    mEventHandle->RemoveEvent(RetryEventName(pkgName));
    mPendingRetries.erase(pkgName);
    ExecuteCallback(pkgName, pending, fps);
    if (!pending.empty()) {
        PostRetry(pending, pkgName, fps, CALLBACK_RETRY_TIMES);
    } else if (fps == 0) {
        // A target of 0 is a one-shot order, forgotten once everyone has it.
        mGameFpsMap.erase(pkgName);
    }
    return RESULT_OK;
}

void GameFpsPolicy::ExecuteCallback(std::string pkgName, CallbackList& callbacks, uint32_t fps)
{
    CallbackList dead;
    auto cursor = callbacks.begin();
    while (cursor != callbacks.end()) {
        sptr<IZelCallbackInterface> callback = cursor->promote();
        if (callback == nullptr) {
            dead.push_back(*cursor);
            cursor = callbacks.erase(cursor);
            ZEL_LOGW("GameFpsPolicy::NotifyGameFpsChange client is dead.");
            continue;
        }
        int32_t result = callback->OnGameFpsChange(fps);
        if (result == CALLBACK_DELIVERED) {
            cursor = callbacks.erase(cursor);
        } else if (result == CALLBACK_CLIENT_DEAD) {
            // Erase first, then take what stands under the cursor: the established order.
            wptr<IZelCallbackInterface> failed = *cursor;
            cursor = callbacks.erase(cursor);
            dead.push_back(cursor != callbacks.end() ? *cursor : failed);
            ZEL_LOGW("GameFpsPolicy::NotifyGameFpsChange client is dead.");
        } else {
            ++cursor;
        }
    }
    RemoveCallback(pkgName, dead);
}

void GameFpsPolicy::RemoveCallback(std::string pkgName, CallbackList callbacks)
{
    auto entry = mCallbackMap.find(pkgName);
    if (callbacks.empty() || entry == mCallbackMap.end()) {
        ZEL_LOGE("GameFpsPolicy::RemoveCallback no callback remove.");
        return;
    }
    std::vector<sptr<IRemoteObject>> removing;
    for (const auto& weak : callbacks) {
        sptr<IZelCallbackInterface> callback = weak.promote();
        if (callback != nullptr) {
            removing.push_back(callback->AsObject());
        }
    }
    CallbackList& registered = entry->second;
    auto cursor = registered.begin();
    while (cursor != registered.end()) {
        sptr<IZelCallbackInterface> callback = cursor->promote();
        if (callback == nullptr) {
            cursor = registered.erase(cursor);
            continue;
        }
        sptr<IRemoteObject> object = callback->AsObject();
        bool matched = false;
        for (const auto& candidate : removing) {
            if (candidate == object) {
                matched = true;
                break;
            }
        }
        cursor = matched ? registered.erase(cursor) : cursor + 1;
    }
    if (registered.empty()) {
        ZEL_LOGI("GameFpsPolicy::RemoveCallback remove pkgName = %{public}s callback success.", pkgName.c_str());
        mCallbackMap.erase(entry);
    }
}

void GameFpsPolicy::PostRetry(const CallbackList& callbacks, const std::string& pkgName, uint32_t fps,
                              uint32_t retryTimes)
{
    mPendingRetries[pkgName] = PendingRetry{fps, retryTimes, callbacks.size()};
    mEventHandle->PostEvent(
        [this, callbacks, pkgName, fps, retryTimes]() { RetryCallback(callbacks, pkgName, fps, retryTimes); },
        RetryEventName(pkgName), CALLBACK_RETRY_DELAY_MS);
}

void GameFpsPolicy::RetryCallback(CallbackList callbacks, std::string pkgName, uint32_t fps, uint32_t retryTimes)
{
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    mPendingRetries.erase(pkgName);
    auto target = mGameFpsMap.find(pkgName);
    if (retryTimes == 0) {
        RemoveCallback(pkgName, callbacks);
        target = mGameFpsMap.find(pkgName);
        if (target != mGameFpsMap.end() && fps == 0 && target->second == 0) {
            mGameFpsMap.erase(target);
        }
        ZEL_LOGI("GameFpsPolicy::RetryCallback the number of retry times reaches the upper limit.");
        return;
    }
    if (target == mGameFpsMap.end() || target->second != fps) {
        ZEL_LOGE(
            "GameFpsPolicy::RetryCallback pkgName = %{public}s, The target frame rate changes. The retry is "
            "canceled.",
            pkgName.c_str());
        return;
    }
    ExecuteCallback(pkgName, callbacks, fps);
    if (callbacks.empty()) {
        if (fps == 0) {
            mGameFpsMap.erase(pkgName);
        }
        ZEL_LOGI("GameFpsPolicy::RetryCallback pkgName = %{public}s, TRetry all succeeded", pkgName.c_str());
        return;
    }
    PostRetry(callbacks, pkgName, fps, retryTimes - 1);
}

int32_t GameFpsPolicy::SetGameFpsForThermalControl(std::string pkgName, uint32_t fps)
{
    if (!mGameFpsSwitch) {
        ZEL_LOGI("GameFpsPolicy RegisterGameFpsListener] The solution is not enabled,Check configuration file.");
        return RESULT_OK;
    }
    if (pkgName.empty()) {
        ZEL_LOGW("GameFpsPolicy::SetGameFpsForThermalControl params verify faild.");
        return RESULT_REFUSED;
    }
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    mGameFpsMap[pkgName] = fps;
    ZEL_LOGI(
        "GameFpsPolicy::SetGameFpsForThermalControl put mGameFpsMap success. pkgName =%{public}s, fps = "
        "%{public}d .",
        pkgName.c_str(), fps);
    NotifyGameFpsChange(pkgName);
    return RESULT_OK;
}

void GameFpsPolicy::AddOrRemoveApp(std::string pkgName, bool isAdd)
{
    if (pkgName.empty()) {
        ZEL_LOGE("GameFpsPolicy::AddOrRemoveApp pkgName verify fail.");
        return;
    }
    // The registry lock guards the sets too; it is never held across the query itself.
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    if (!isAdd) {
        mGamePkgSet.erase(pkgName);
        return;
    }
    if (mGamePkgSet.count(pkgName) != 0) {
        return;
    }
    mQueryingPkgSet.insert(pkgName);
    mEventHandle->ExecuteAsyncTask(
        [this, pkgName]() { QueryGamePkg(std::vector<std::string>{pkgName}, ADDED_APP_QUERY_TIMES); });
}

void GameFpsPolicy::QueryGamePkg(std::vector<std::string> pkgList, uint32_t retryTimes)
{
    if (!mGameFpsSwitch) {
        ZEL_LOGI("GameFpsPolicy QueryGamePkg] The solution is not enabled,Check configuration file.");
        return;
    }
    if (retryTimes == 0) {
        ZEL_LOGI("GameFpsPolicy::QueryGamePkg the number of retry times reaches the upper limit.");
        if (pkgList.size() == 1) {
            RestoreCacheCallback(pkgList.front());
        }
        return;
    }
    if (ExecuteQueryGamePkg(pkgList) != RESULT_OK) {
        ZEL_LOGI("GameFpsPolicy::QueryGamePkg next time.");
        mEventHandle->DelayTask([this, pkgList, retryTimes]() { QueryGamePkg(pkgList, retryTimes - 1); },
                                QUERY_RETRY_DELAY_MS);
        return;
    }
    if (pkgList.size() == 1) {
        RestoreCacheCallback(pkgList.front());
    }
}

int32_t GameFpsPolicy::ExecuteQueryGamePkg(std::vector<std::string> pkgList)
{
    std::vector<QuillonServiceClient::AppCategoryInfo> infos;
    // A remote call: made without the registry lock.
    int32_t ret = QuillonServiceClient::CategoryManager::GetCategoryFromSystem(pkgList, infos, CATEGORY_CALLER);
    ZEL_LOGI("GameFpsPolicy::ExecuteQueryGamePkg ret = %{public}d", ret);
    if (ret != 0) {
        ZEL_LOGE("GameFpsPolicy::ExecuteQueryGamePkg faild.");
        return QUERY_FAILED;
    }
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    for (const auto& info : infos) {
        if (info.packageType != PACKAGE_TYPE_GAME) {
            continue;
        }
        if (!mGamePkgSet.empty() && mGamePkgSet.size() >= mMaxPkgSize) {
            mGamePkgSet.erase(mGamePkgSet.begin());
        }
        ZEL_LOGI("GameFpsPolicy::ExecuteQueryGamePkg add game pkgName = %{public}s", info.bundleName.c_str());
        mGamePkgSet.insert(info.bundleName);
    }
    return RESULT_OK;
}

void GameFpsPolicy::SetGameFpsSwtich()
{
    const auto& enableConfig = ZelManagerConfig::GetEnableConfig();
    auto entry = enableConfig.find(GAME_FPS_SWITCH_KEY);
    if (entry == enableConfig.end()) {
        ZEL_LOGE("GameFpsPolicy::SetGameFpsSwtich no config game fps swtich.");
        return;
    }
    mGameFpsSwitch = entry->second;
}

void GameFpsPolicy::SetMaxCallbackSize()
{
    const auto& intConfig = ZelManagerConfig::GetIntNumbersConfig();
    auto entry = intConfig.find(CALLBACK_SIZE_KEY);
    if (entry == intConfig.end() || entry->second.size() != CALLBACK_SIZE_CONFIG_LEN) {
        ZEL_LOGE("GameFpsPolicy::SetMaxCallbackSize no config callback size.");
        return;
    }
    int32_t pkgSize = entry->second[0];
    int32_t callbackSize = entry->second[1];
    if (pkgSize == 0 || callbackSize == 0) {
        ZEL_LOGE("GameFpsPolicy::SetMaxCallbackSize callback size verify faild.");
        return;
    }
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    // Negative values are taken as their unsigned image, as configured.
    mMaxPkgSize = static_cast<uint32_t>(pkgSize);
    mMaxCallbackSize = static_cast<uint32_t>(callbackSize);
    ZEL_LOGI("GameFpsPolicy::SetMaxCallbackSize set callback size success.");
}

GameFpsPolicy::State GameFpsPolicy::DumpState()
{
    std::vector<sptr<IZelCallbackInterface>> held;  // outlives the lock below
    State state;
    state.gameFpsSwitch = mGameFpsSwitch;
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    state.maxPkgSize = mMaxPkgSize;
    state.maxCallbackSize = mMaxCallbackSize;
    state.gamePkgs = mGamePkgSet;
    state.queryingPkgs = mQueryingPkgSet;
    for (const auto& [pkgName, callbacks] : mCallbackMap) {
        state.callbacks[pkgName] = Liveness(callbacks, held);
    }
    for (const auto& [pkgName, callbacks] : mCallbackCache) {
        state.parkedCallbacks[pkgName] = Liveness(callbacks, held);
    }
    state.targets = mGameFpsMap;
    state.retries = mPendingRetries;
    return state;
}

}  // namespace Tarvo::Vantel
