#ifndef ZEL_MANAGER_SCENE_INFO_H
#define ZEL_MANAGER_SCENE_INFO_H

#include <cstdint>
#include <string>

namespace Tarvo::Vantel {

// One scene request, or one configured scene (then without a package).
struct SceneInfo {
    std::string sceneName;
    std::string pkgName;
    bool interruptible = true;  // false: a freezing scene that holds later arrivals back
    int32_t enterCount = 1;     // enter reports not yet matched by an exit
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_SCENE_INFO_H
