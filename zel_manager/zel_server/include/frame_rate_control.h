#ifndef ZEL_MANAGER_FRAME_RATE_CONTROL_H
#define ZEL_MANAGER_FRAME_RATE_CONTROL_H

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "application_state_observer_stub.h"
#include "scene_info.h"
#include "zel_event_handle.h"
#include "zel_mox_adapter.h"

namespace Tarvo::Vantel {

// The policy core for display frame rate: which animation scene is current, which foreground
// package the frame-rate arbiter sees. Freezing (non-interruptible) scenes hold later arrivals in
// a wait queue and are released by their exit or, failing that, by a 3000 ms time-out.
//
// One recursive lock, sceneLock, covers all scene and foreground state and stays held across the
// calls to the arbiter and to the task queue, so the arbiter hears decisions in the order they
// were made. It is recursive because ending a scene promotes a waiting one or restores the
// foreground package, both of which re-enter it.
class FrameRateControl : public AppExecFwk::ApplicationStateObserverStub {
public:
    // A copy of the live state, for a dump.
    struct State {
        std::vector<std::string> foreground;  // bottom first
        std::string curPkgName;
        std::string pendingPkgName;
        std::string originPkgName;
        std::map<std::string, int32_t> pkgIds;
        std::vector<SceneInfo> activeScenes;  // by name
        std::string currentScene;             // empty: none
        std::vector<SceneInfo> waitQueue;     // oldest first
        uint32_t thermForceValue = 0;
        bool lightStateType0 = false;
        bool lightStateType1 = false;
        bool lightFactorStatus = false;
    };

    static sptr<FrameRateControl> GetInstance();

    // Fills the catalogue of known scenes while the configuration loads; "1" means interruptible.
    static void SetBasicSceneAttributes(std::string name, std::string interruptible);
    static SceneInfo findSceneInfo(std::string sceneName);

    // state 1 enters the scene, 0 exits it once, 2 exits it and drops every pending enter.
    void SetScene(std::string pkgName, std::string sceneName, int32_t state);

    // Reports pkgName as the foreground package. Runs only with sceneLock held.
    void NotifyPkgChange(std::string pkgName);

    // The application manager's view of the foreground: kept as a stack so that an application
    // leaving the top hands the foreground back to the one below it.
    void OnForegroundApplicationChanged(const AppExecFwk::AppStateData& appStateData) override;

    // Power-save mode as the common event carries it; the rate comes from the "powermode" pair.
    static void PowerModeInterface(uint32_t mode);
    // A thermally forced frame rate; 0 withdraws the one in force.
    void ThermalForceInterface(uint32_t value);
    // Light types 0 and 1 come from the brightness listener; the arbiter hears only changes.
    void NotifyLightState(uint32_t type, bool state);
    void SetLightAndBrightnessThreshold();
    State DumpState();

    ~FrameRateControl() override;
    FrameRateControl(const FrameRateControl&) = delete;
    FrameRateControl& operator=(const FrameRateControl&) = delete;

    static inline std::map<std::string, SceneInfo> sSceneConfig;

private:
    friend class FrameRateControlTest;

    FrameRateControl();

    void SetSceneInfo(SceneInfo info);
    void RemoveSceneInfo(SceneInfo info, bool force);
    // These two run only with sceneLock held.
    void RemoveSceneInfoInner(SceneInfo info);
    void RemoveSceneInfoFromWaitQueue(SceneInfo info, bool force);

    void EnterWhileFreezing(const SceneInfo& info);
    void EnterScene(const SceneInfo& info);
    void ArmDelayedDelete(const SceneInfo& info);
    void RestoreForeground(const SceneInfo& ended);
    // These two run only with sceneLock held.
    void PushForeground(const std::string& pkgName, int32_t pid);
    void PopForeground(const std::string& pkgName);

    static inline sptr<FrameRateControl> instance_;
    static inline std::mutex instanceLock_;

    ZelMoxAdapter* moxAdapter_;
    EventHandle* eventHandle_;
    std::list<std::string> foregroundPkgList;
    std::string curPkgName;
    std::string pendingPkgName;
    std::string originPkgName;
    std::vector<SceneInfo> waitQueue;
    SceneInfo* curSceneInfo = nullptr;  // points into sceneInfoMap; cleared before its entry goes
    std::map<std::string, SceneInfo> sceneInfoMap;
    std::map<std::string, int32_t> pkgIdMap;
    std::recursive_mutex sceneLock;
    // Atomic: written without sceneLock, read by a dump from another thread.
    std::atomic<bool> lightStateType1 = false;
    std::atomic<bool> lightStateType0 = false;
    std::atomic<bool> lightFactorStatus = false;
    std::atomic<uint32_t> thermForceValue = 0;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_FRAME_RATE_CONTROL_H
