#ifndef ZEL_MANAGER_ZEL_MOX_ADAPTER_H
#define ZEL_MANAGER_ZEL_MOX_ADAPTER_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "rs_interfaces.h"

namespace Tarvo::Vantel {

// The service's only path to the frame-rate arbiter (MOX), through the render-service client.
// It decides nothing and keeps no state beyond its voter names: every call is fire-and-forget,
// followed by an Info line. It has no lock: callers keep their own order.
class ZelMoxAdapter {
public:
    static ZelMoxAdapter* GetInstance();

    ZelMoxAdapter(const ZelMoxAdapter&) = delete;
    ZelMoxAdapter& operator=(const ZelMoxAdapter&) = delete;

    void SendPkgToMOX(const std::vector<std::string>& pkgs);
    void SendSceneInfoToMOX(const std::string& sceneName, bool state);
    void SendThermForceRateFrameToMOX(uint32_t value, bool state);
    // Votes under the thermal voter on purpose: power and thermal forcing replace each other.
    void SendPowerToMOX(int32_t mode, bool state);
    void SetLightFactorStatus(bool state);

    // Scene names the arbiter knows under another name.
    static const std::map<std::string, std::string>& GetSceneAliases();

private:
    ZelMoxAdapter();
    ~ZelMoxAdapter() = default;

    const uint32_t minRate_ = 0;
    const std::string sceneVoter_ = "VOTER_SCENE";
    const std::string thermalVoter_ = "VOTER_THERMAL";
    [[maybe_unused]] const std::string powerVoter_ = "VOTER_POWER_MODE";  // kept, never sent
    RSInterfaces& rsInterfaces_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MOX_ADAPTER_H
