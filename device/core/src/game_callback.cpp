#include "game_callback.h"

namespace Tarvo::Emu {

GameCallback::GameCallback(std::shared_ptr<DeviceTap> tap, std::string bundle, std::string name)
    : tap_(std::move(tap)), bundle_(std::move(bundle)), name_(std::move(name))
{
}

int32_t GameCallback::OnGameFpsChange(uint32_t targetFps)
{
    tap_->Emit("game.fps", {{"bundle", bundle_}, {"cb", name_}, {"fps", static_cast<int64_t>(targetFps)}});
    return 0;
}

}  // namespace Tarvo::Emu
