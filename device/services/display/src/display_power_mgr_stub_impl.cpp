#include "display_power_mgr_stub_impl.h"

#include "display_power_mgr_interface.h"
#include "ipc_types.h"
#include "message_parcel.h"

namespace Tarvo::Emu {
using namespace Tarvo::DisplayPowerMgr;

DisplayPowerMgrStubImpl::DisplayPowerMgrStubImpl() : IPCObjectStub(DISPLAY_POWER_MGR_DESCRIPTOR) {}

int DisplayPowerMgrStubImpl::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                             MessageOption& option)
{
    if (code != REGISTER_BRIGHTNESS_CALLBACK) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != DISPLAY_POWER_MGR_DESCRIPTOR) {
        return ERR_INVALID_VALUE;
    }
    return HandleRegister(data, reply);
}

int DisplayPowerMgrStubImpl::HandleRegister(MessageParcel& data, MessageParcel& reply)
{
    std::vector<int32_t> thresholds;
    if (!data.ReadInt32Vector(&thresholds)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> callback = data.ReadRemoteObject();
    if (callback == nullptr) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> previous;  // released outside the lock
    {
        std::lock_guard<std::mutex> lock(mutex_);
        previous = std::move(callback_);
        callback_ = std::move(callback);
        thresholds_ = std::move(thresholds);
    }
    return reply.WriteInt32(0) ? ERR_NONE : ERR_INVALID_VALUE;
}

sptr<IRemoteObject> DisplayPowerMgrStubImpl::Callback() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return callback_;
}

std::vector<int32_t> DisplayPowerMgrStubImpl::Thresholds() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return thresholds_;
}

}  // namespace Tarvo::Emu
