#include "zel_callback_adapter.h"

#include <utility>

#include "zel_log.h"

namespace Tarvo::Vantel {

ZelCallbackAdapter::ZelCallbackAdapter(const std::u16string& descriptor)
    : Tarvo::IRemoteStub<IZelCallbackImpl>(false), descriptor_(descriptor)
{
}

void ZelCallbackAdapter::AddTask(uint32_t code, Task task)
{
    taskMap_[code] = std::move(task);
}

int ZelCallbackAdapter::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    ZEL_LOGD("[ZelCallbackAdapter::OnRemoteRequest] cmd = %{public}d, flags= %{public}d", code, option.GetFlags());
    if (data.ReadInterfaceToken() != descriptor_) {
        ZEL_LOGE("[ZelCallbackAdapter::OnRemoteRequest] descriptor is not matched!");
        return 0;
    }
    auto it = taskMap_.find(code);
    if (it == taskMap_.end() || !it->second) {
        return 0;
    }
    try {
        it->second(data, reply);
    } catch (...) {
        // Nothing may escape into the IPC thread; the task's owner logs its own failures.
    }
    return 0;
}

}  // namespace Tarvo::Vantel
