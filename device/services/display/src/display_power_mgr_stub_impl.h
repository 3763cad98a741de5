#ifndef ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MGR_STUB_IMPL_H
#define ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MGR_STUB_IMPL_H

#include <mutex>
#include <vector>

#include "ipc_object_stub.h"

namespace Tarvo::Emu {

// The display power manager's object. It reads the brightness-listener registration by hand (code
// 21); a registration with a foreign token or missing fields is refused with ERR_INVALID_VALUE and
// changes nothing. Other codes get the platform's default answers.
class DisplayPowerMgrStubImpl : public IPCObjectStub {
public:
    DisplayPowerMgrStubImpl();

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

    // Null before any registration.
    sptr<IRemoteObject> Callback() const;
    std::vector<int32_t> Thresholds() const;

private:
    int HandleRegister(MessageParcel& data, MessageParcel& reply);

    mutable std::mutex mutex_;
    sptr<IRemoteObject> callback_;
    std::vector<int32_t> thresholds_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MGR_STUB_IMPL_H
