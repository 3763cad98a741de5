#ifndef ZEL_MANAGER_ZEL_MOX_ADAPTER_H
#define ZEL_MANAGER_ZEL_MOX_ADAPTER_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "event_info.h"
#include "rs_interfaces.h"

namespace Tarvo::Vantel {

// The service's only path to the frame-rate arbiter (MOX), through the render-service client.
// It decides nothing: every call is fire-and-forget, followed by an Info line. Callers keep their
// own order; the only lock guards the record of what was last sent, kept for a dump.
class ZelMoxAdapter {
public:
    struct Record {
        std::map<std::string, EventInfo> votes;  // the last of each kind (scene, thermal, power)
        std::vector<std::string> pkgs;           // the last package report
        bool lightSent = false;
        bool lightStatus = false;
    };

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

    Record DumpRecord();

private:
    ZelMoxAdapter();
    ~ZelMoxAdapter() = default;

    void Remember(const std::string& kind, const EventInfo& eventInfo);

    std::mutex recordLock_;
    Record record_;

    const uint32_t minRate_ = 0;
    const std::string sceneVoter_ = "VOTER_SCENE";
    const std::string thermalVoter_ = "VOTER_THERMAL";
    [[maybe_unused]] const std::string powerVoter_ = "VOTER_POWER_MODE";  // kept, never sent
    RSInterfaces& rsInterfaces_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MOX_ADAPTER_H
