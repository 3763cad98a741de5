#ifndef ZEL_MANAGER_I_ZEL_MANAGER_H
#define ZEL_MANAGER_I_ZEL_MANAGER_H

#include <cstdint>
#include <map>
#include <string>

#include "i_zel_callback_interface.h"
#include "iremote_broker.h"
#include "zel_manager_interface_code.h"

namespace Tarvo::Vantel {

// The service's remote interface (system ability 65958).
//
// Wire format: every request starts with the interface token; then, by code:
//   0 SetScene                     pkgName string, sceneName string, state uint32   (one-way, no reply)
//   1 ChangeResolutionMode         mode int32, flag int32                            reply: int32
//   2 SetThermalPolicy             keys uint32 vector, values uint32 vector          reply: uint32
//   3 RegisterGameFpsListener      callback remote object                            reply: uint32
//   4 SetGameFpsForThermalControl  pkgName string, fps uint32                        reply: uint32
class IZelManager : public Tarvo::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"Tarvo.IZelManager");

    virtual void SetScene(const std::string& pkgName, const std::string& sceneName, uint32_t state) = 0;
    virtual int32_t ChangeResolutionMode(int32_t mode, int32_t flag) = 0;
    virtual uint32_t SetThermalPolicy(std::map<uint32_t, uint32_t> map) = 0;
    virtual uint32_t RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback) = 0;
    virtual uint32_t SetGameFpsForThermalControl(const std::string& pkgName, uint32_t fps) = 0;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_I_ZEL_MANAGER_H
