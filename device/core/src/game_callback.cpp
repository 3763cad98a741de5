#include "game_callback.h"

namespace Tarvo::Emu {

GameCallback::GameCallback(Trace& trace, std::string bundle, std::string name)
    : trace_(trace), bundle_(std::move(bundle)), name_(std::move(name))
{
}

int32_t GameCallback::OnGameFpsChange(uint32_t targetFps)
{
    trace_.Emit("game.fps", {{"bundle", bundle_}, {"cb", name_}, {"fps", static_cast<int64_t>(targetFps)}});
    return 0;
}

}  // namespace Tarvo::Emu
