#ifndef ZEL_MANAGER_ZEL_MANAGER_SERVICE_H
#define ZEL_MANAGER_ZEL_MANAGER_SERVICE_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "system_ability.h"
#include "zel_common_event_subscriber.h"
#include "zel_event_handle.h"
#include "zel_manager_stub.h"

namespace Tarvo::Vantel {

// The one remote-callable object the library publishes (system ability 65958). It does no policy
// work itself: start-up waits for the platform services it needs, then wires the components
// together; each remote request is handed on, on the caller's IPC thread, to its component.
//
// Remote requests are accepted from publication on, before start-up has run: the components
// they reach answer from their defaults.
class ZelManagerService : public Tarvo::SystemAbility, public ZelManagerStub {
    DECLARE_SYSTEM_ABILITY(ZelManagerService)

public:
    static constexpr int32_t ZEL_MANAGER_SERVICE_ID = 65958;
    static constexpr int64_t START_RETRY_DELAY_MS = 2000;
    static constexpr uint32_t THERMAL_POLICY_KEY = 101;
    static inline const std::set<int32_t> kRequiredSystemAbilityIds = {501, 4607, ZEL_MANAGER_SERVICE_ID};

    ZelManagerService(int32_t systemAbilityId, bool runOnCreate);
    ~ZelManagerService() override;

    void SetScene(const std::string& pkgName, const std::string& sceneName, uint32_t state) override;
    int32_t ChangeResolutionMode(int32_t mode, int32_t flag) override;
    uint32_t SetThermalPolicy(std::map<uint32_t, uint32_t> map) override;
    uint32_t RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback) override;
    uint32_t SetGameFpsForThermalControl(const std::string& pkgName, uint32_t fps) override;
    // The live state of every component, as text, or as one JSON object with "--json".
    int32_t Dump(int32_t fd, const std::vector<std::u16string>& args) override;

    // Runs on the task queue; retries every 2000 ms, without limit, until the service manager and
    // every required ability are obtainable.
    void InitServiceState();
    // Subscribes the package and power-save events once; a second call only logs. Task queue only.
    void RegisterCommonEventListener();

protected:
    void OnStart() override;
    void OnStop() override;

private:
    EventHandle* handler_;
    std::shared_ptr<ZelCommonEventSubscriber> subscriber_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MANAGER_SERVICE_H
