#include "display_power_manager_service.h"

#include "display_power_mgr_interface.h"
#include "display_power_mgr_stub_impl.h"
#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Emu {
using namespace Tarvo::DisplayPowerMgr;

DisplayPowerManagerService::DisplayPowerManagerService(DeviceContext& ctx) : ctx_(ctx) {}

DisplayPowerManagerService::~DisplayPowerManagerService() = default;

void DisplayPowerManagerService::Start()
{
    stub_ = ctx_.LaunchService<DisplayPowerMgrStubImpl>("display_power_manager", DISPLAY_POWER_MANAGER_ID, process_);
}

bool DisplayPowerManagerService::Light(uint32_t type, std::optional<bool> state)
{
    sptr<IRemoteObject> callback = stub_ != nullptr ? stub_->Callback() : nullptr;
    if (callback == nullptr) {
        return false;
    }
    MessageParcel data;
    if (!data.WriteInterfaceToken(BRIGHTNESS_CALLBACK_DESCRIPTOR) || !data.WriteUint32(type) ||
        (state && !data.WriteBool(*state))) {
        return false;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    // The callback hears from the power manager's process, as it would on a device.
    ScopedProcess scope(process_);
    return callback->SendRequest(ON_BRIGHTNESS_CHANGE, data, reply, option) == ERR_NONE;
}

std::vector<int32_t> DisplayPowerManagerService::LastThresholds() const
{
    return stub_ != nullptr ? stub_->Thresholds() : std::vector<int32_t>{};
}

bool DisplayPowerManagerService::HasCallback() const
{
    return stub_ != nullptr && stub_->Callback() != nullptr;
}

}  // namespace Tarvo::Emu
