#ifndef ZEL_MANAGER_ZEL_MANAGER_INTERFACE_CODE_H
#define ZEL_MANAGER_ZEL_MANAGER_INTERFACE_CODE_H

#include <cstdint>

namespace Tarvo::Vantel {

// Request codes of IZelManager; part of the wire contract with every client.
enum class ZelManagerInterfaceCode : uint32_t {
    SET_SCENE = 0,  // one-way
    CHANGE_RESOLUTION_MODE = 1,
    SET_THERMAL_POLICY = 2,
    REGISTER_GAME_FPS_LISTENER = 3,
    SET_GAME_FPS_FOR_THERMAL_CONTROL = 4,
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MANAGER_INTERFACE_CODE_H
