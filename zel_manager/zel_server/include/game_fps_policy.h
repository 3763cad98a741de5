#ifndef ZEL_MANAGER_GAME_FPS_POLICY_H
#define ZEL_MANAGER_GAME_FPS_POLICY_H

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "i_zel_callback_interface.h"
#include "refbase.h"
#include "zel_event_handle.h"

namespace Tarvo::Vantel {

// The registry of game frame-rate listeners: which packages are games, who listens per game, and
// the thermal target each game is told. Callbacks are held weakly; a failing one is retried on the
// task queue and dropped when it stays silent or its client dies.
//
// Bounds are tested strictly, so a package list settles at mMaxCallbackSize + 1 entries and the
// listener map at mMaxPkgSize + 1 packages; the game set is bounded inclusively.
class GameFpsPolicy : public RefBase {
public:
    using CallbackList = std::vector<wptr<IZelCallbackInterface>>;

    // A retry of a package's callbacks waiting on the task queue.
    struct PendingRetry {
        uint32_t fps = 0;
        uint32_t retryTimes = 0;
        size_t callbacks = 0;
    };
    // A copy of the live state, for a dump; each callback as alive (true) or dead.
    struct State {
        bool gameFpsSwitch = false;
        uint32_t maxPkgSize = 0;
        uint32_t maxCallbackSize = 0;
        std::set<std::string> gamePkgs;
        std::set<std::string> queryingPkgs;
        std::map<std::string, std::vector<bool>> callbacks;
        std::map<std::string, std::vector<bool>> parkedCallbacks;
        std::map<std::string, uint32_t> targets;
        std::map<std::string, PendingRetry> retries;
    };

    static GameFpsPolicy* GetInstance();
    GameFpsPolicy();
    ~GameFpsPolicy() override = default;
    GameFpsPolicy(const GameFpsPolicy&) = delete;
    GameFpsPolicy& operator=(const GameFpsPolicy&) = delete;

    // 0 registered or parked while the package is classified, 1 refused.
    int32_t RegisterGameFpsListener(std::string pkgName, sptr<IZelCallbackInterface>& callback);
    void AddToCallbackCache(std::string pkgName, sptr<IZelCallbackInterface> callback);
    void RestoreCacheCallback(std::string pkgName);
    int32_t NotifyGameFpsChange(std::string pkgName);
    // Leaves in `callbacks` only those that failed transiently.
    void ExecuteCallback(std::string pkgName, CallbackList& callbacks, uint32_t fps);
    void RetryCallback(CallbackList callbacks, std::string pkgName, uint32_t fps, uint32_t retryTimes);
    void RemoveCallback(std::string pkgName, CallbackList callbacks);
    int32_t SetGameFpsForThermalControl(std::string pkgName, uint32_t fps);
    void AddOrRemoveApp(std::string pkgName, bool isAdd);
    void QueryGamePkg(std::vector<std::string> pkgList, uint32_t retryTimes);
    // 0 when the category service answered, 5 otherwise.
    int32_t ExecuteQueryGamePkg(std::vector<std::string> pkgList);
    void SetGameFpsSwtich();
    void SetMaxCallbackSize();
    State DumpState();

private:
    void PostRetry(const CallbackList& callbacks, const std::string& pkgName, uint32_t fps, uint32_t retryTimes);

    // Recursive: registration and thermal control notify under it, and restoring the cache
    // registers under it.
    std::recursive_mutex mMutex;
    EventHandle* mEventHandle = nullptr;
    std::set<std::string> mGamePkgSet;
    std::map<std::string, CallbackList> mCallbackMap;
    std::map<std::string, uint32_t> mGameFpsMap;
    std::set<std::string> mQueryingPkgSet;
    std::map<std::string, CallbackList> mCallbackCache;
    std::map<std::string, PendingRetry> mPendingRetries;
    uint32_t mMaxPkgSize = 1000;
    uint32_t mMaxCallbackSize = 5;
    // Written once at start-up, read by every request without the lock.
    std::atomic<bool> mGameFpsSwitch = false;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_GAME_FPS_POLICY_H
