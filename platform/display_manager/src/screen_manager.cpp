#include "screen_manager.h"

#include "display_manager_client.h"

namespace Tarvo::Vantel {

ScreenManager& ScreenManager::GetInstance()
{
    static ScreenManager instance;
    return instance;
}

sptr<Screen> ScreenManager::GetScreenById(ScreenId screenId)
{
    sptr<IDisplayManagerService> service = GetDisplayManagerService();
    if (service == nullptr) {
        return nullptr;
    }
    std::optional<ScreenInfo> info = service->GetScreenInfo(screenId);
    return info ? sptr<Screen>::MakeSptr(*info) : nullptr;
}

std::vector<sptr<Screen>> ScreenManager::GetAllScreens()
{
    sptr<IDisplayManagerService> service = GetDisplayManagerService();
    if (service == nullptr) {
        return {};
    }
    std::vector<sptr<Screen>> screens;
    for (const auto& info : service->GetAllScreenInfos()) {
        screens.push_back(sptr<Screen>::MakeSptr(info));
    }
    return screens;
}

}  // namespace Tarvo::Vantel
