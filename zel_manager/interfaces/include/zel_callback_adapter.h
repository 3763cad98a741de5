#ifndef ZEL_MANAGER_ZEL_CALLBACK_ADAPTER_H
#define ZEL_MANAGER_ZEL_CALLBACK_ADAPTER_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "i_zel_callback_impl.h"
#include "iremote_stub.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {

// Answers a foreign callback interface by table: requests must carry the given token, and each
// code runs its task on the IPC thread with the parcels (the data positioned after the token).
// Always returns 0, also for a wrong token or a code without a task: the other side can't tell.
class ZelCallbackAdapter : public Tarvo::IRemoteStub<IZelCallbackImpl> {
public:
    using Task = std::function<void(MessageParcel& data, MessageParcel& reply)>;

    explicit ZelCallbackAdapter(const std::u16string& descriptor);

    // Before the adapter is handed out: requests are not guarded against it. Replaces any task of the code.
    void AddTask(uint32_t code, Task task);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    const std::u16string descriptor_;
    std::map<uint32_t, Task> taskMap_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_CALLBACK_ADAPTER_H
