#ifndef TARVO_IPC_TEST_IPC_TEST_SUPPORT_H
#define TARVO_IPC_TEST_IPC_TEST_SUPPORT_H

// Processes and objects for the IPC tests.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ipc_object_stub.h"
#include "message_option.h"
#include "message_parcel.h"
#include "virtual_process.h"

namespace Tarvo::IpcTest {

constexpr auto kTimeout = std::chrono::seconds(10);

inline std::shared_ptr<VirtualProcess> MakeProcess(int32_t pid, const std::string& name)
{
    return VirtualProcess::Create(
        {pid, pid + 10000, 0x10000000u + static_cast<uint32_t>(pid), (1ULL << 32) | static_cast<uint64_t>(pid), name});
}

// A stub whose requests go to a function (the platform's default answers when it has none).
class FunctionStub : public IPCObjectStub {
public:
    using Handler = std::function<int(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&)>;

    FunctionStub(std::u16string descriptor, Handler handler, bool serial = false)
        : IPCObjectStub(std::move(descriptor), serial), handler_(std::move(handler))
    {
    }

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        return handler_ ? handler_(code, data, reply, option)
                        : IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }

private:
    Handler handler_;
};

// A stub owned by `owner`.
inline sptr<FunctionStub> MakeStub(const std::shared_ptr<VirtualProcess>& owner, std::u16string descriptor,
                                   FunctionStub::Handler handler = nullptr, bool serial = false)
{
    ScopedProcess scope(owner);
    return new FunctionStub(std::move(descriptor), std::move(handler), serial);
}

// The object as `reader` gets it out of a parcel.
inline sptr<IRemoteObject> Transfer(const sptr<IRemoteObject>& object, const std::shared_ptr<VirtualProcess>& reader)
{
    MessageParcel parcel;
    if (!parcel.WriteRemoteObject(object)) {
        return nullptr;
    }
    ScopedProcess scope(reader);
    return parcel.ReadRemoteObject();
}

// Sends a request with one int32 argument; the reply's first int32, if any, lands in `answer`.
inline int Call(const sptr<IRemoteObject>& object, uint32_t code, int32_t argument, int32_t* answer = nullptr,
                int flags = MessageOption::TF_SYNC, int waitTime = MessageOption::TF_WAIT_TIME)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(flags, waitTime);
    data.WriteInt32(argument);
    int status = object->SendRequest(code, data, reply, option);
    if (answer != nullptr) {
        reply.ReadInt32(*answer);
    }
    return status;
}

}  // namespace Tarvo::IpcTest

#endif  // TARVO_IPC_TEST_IPC_TEST_SUPPORT_H
