#ifndef ZEL_MANAGER_ZEL_MANAGER_PROXY_H
#define ZEL_MANAGER_ZEL_MANAGER_PROXY_H

#include "i_zel_manager.h"
#include "iremote_proxy.h"

namespace Tarvo::Vantel {

// Client side of IZelManager. Never throws; each failure is a log line and a fixed fall-back
// value, different per operation and part of the contract with clients:
//                        no remote  bad argument  token  argument  send  reply
//   ChangeResolutionMode    -1          -          -1      -1       -1    -1
//   SetThermalPolicy         2     0 (empty map)    3       0        0     0
//   RegisterGameFpsListener  2     5 (null cb)      3       5        5     5
//   SetGameFpsForThermal..   2          -           3       5        5     0
class ZelManagerProxy : public Tarvo::IRemoteProxy<IZelManager> {
public:
    explicit ZelManagerProxy(const sptr<IRemoteObject>& impl);

    void SetScene(const std::string& pkgName, const std::string& sceneName, uint32_t state) override;
    int32_t ChangeResolutionMode(int32_t mode, int32_t flag) override;
    uint32_t SetThermalPolicy(std::map<uint32_t, uint32_t> map) override;
    uint32_t RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback) override;
    uint32_t SetGameFpsForThermalControl(const std::string& pkgName, uint32_t fps) override;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MANAGER_PROXY_H
