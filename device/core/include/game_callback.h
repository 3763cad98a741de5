#ifndef ZEL_DEVICE_GAME_CALLBACK_H
#define ZEL_DEVICE_GAME_CALLBACK_H

#include <memory>
#include <string>

#include "device_tap.h"
#include "zel_callback_stub.h"

namespace Tarvo::Emu {

// A game's frame-rate callback object, living in the game's process: every OnGameFpsChange it
// receives is traced as game.fps {bundle, cb, fps}.
class GameCallback : public Vantel::ZelCallbackStub {
public:
    GameCallback(std::shared_ptr<DeviceTap> tap, std::string bundle, std::string name);

    int32_t OnGameFpsChange(uint32_t targetFps) override;

private:
    const std::shared_ptr<DeviceTap> tap_;
    const std::string bundle_;
    const std::string name_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_GAME_CALLBACK_H
