#include "game_callback.h"

#include "ipc_types.h"

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

int GameCallback::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    if (code != ON_GAME_FPS_CHANGE) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    uint32_t fps = 0;
    if (!data.ReadUint32(fps)) {
        return ERR_INVALID_VALUE;
    }
    OnGameFpsChange(fps);
    return ERR_NONE;
}

}  // namespace Tarvo::Emu
