#ifndef ZEL_MANAGER_ZEL_DUMP_H
#define ZEL_MANAGER_ZEL_DUMP_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "frame_rate_control.h"
#include "game_fps_policy.h"
#include "resolution_manager.h"
#include "scene_info.h"
#include "zel_mox_adapter.h"

namespace Tarvo::Vantel {

// The service's live state as a dump shows it. Each component is copied under its own lock, one
// after the other, so no lock is held while another is taken; the parts may be an instant apart.
struct ServiceDump {
    std::map<std::string, bool> switches;
    std::map<std::string, std::vector<int32_t>> numbers;
    std::map<std::string, SceneInfo> sceneCatalogue;
    FrameRateControl::State frameRate;
    bool freezingTimeoutPending = false;
    ZelMoxAdapter::Record mox;
    GameFpsPolicy::State games;
    ResolutionManager::State resolution;
};

ServiceDump CollectServiceDump();
// One JSON object; keys and lists in a fixed order, so that equal states give equal text.
std::string DumpJson(const ServiceDump& dump);
// For a person: one section per component.
std::string DumpText(const ServiceDump& dump);

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_DUMP_H
