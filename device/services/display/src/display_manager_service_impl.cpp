#include "display_manager_service_impl.h"

namespace Tarvo::Emu {
using Vantel::DMError;
using Vantel::ScreenInfo;

DisplayManagerServiceImpl::DisplayManagerServiceImpl(Trace& trace, const ScreenInfo& defaultScreen)
    : trace_(trace), defaultDisplay_(defaultScreen.id), screens_{{defaultScreen.id, defaultScreen}}
{
}

Vantel::DisplayId DisplayManagerServiceImpl::GetDefaultDisplayId()
{
    return defaultDisplay_;
}

std::optional<ScreenInfo> DisplayManagerServiceImpl::GetScreenInfo(Vantel::ScreenId screenId)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = screens_.find(screenId);
    if (it == screens_.end()) {
        return std::nullopt;
    }
    return it->second;
}

std::vector<ScreenInfo> DisplayManagerServiceImpl::GetAllScreenInfos()
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<ScreenInfo> infos;
    for (const auto& [id, info] : screens_) {
        infos.push_back(info);
    }
    return infos;
}

DMError DisplayManagerServiceImpl::SetResolution(Vantel::ScreenId screenId, uint32_t width, uint32_t height,
                                                 uint32_t density)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = screens_.find(screenId);
    if (it == screens_.end()) {
        return DMError::DM_ERROR_INVALID_SCREEN;
    }
    if (width == 0 || height == 0 || density == 0) {
        return DMError::DM_ERROR_INVALID_PARAM;
    }
    it->second.width = width;
    it->second.height = height;
    it->second.density = density;
    // Under the lock, so the trace shows changes in the order they were applied; Emit never calls out.
    trace_.Emit("screen.resolution", {{"width", static_cast<int64_t>(width)},
                                      {"height", static_cast<int64_t>(height)},
                                      {"density", static_cast<int64_t>(density)}});
    return DMError::DM_OK;
}

}  // namespace Tarvo::Emu
