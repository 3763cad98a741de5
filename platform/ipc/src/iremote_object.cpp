#include "iremote_object.h"

#include "iremote_broker.h"
#include "message_parcel.h"

namespace Tarvo {

IRemoteObject::IRemoteObject(std::u16string descriptor) : descriptor_(std::move(descriptor)) {}

bool IRemoteObject::IsProxyObject() const
{
    return false;
}

bool IRemoteObject::IsObjectDead() const
{
    return false;
}

sptr<IRemoteBroker> IRemoteObject::AsInterface()
{
    return nullptr;
}

int32_t IRemoteObject::GetObjectRefCount()
{
    return GetSptrRefCount();
}

bool IRemoteObject::Marshalling(Parcel& parcel) const
{
    auto* message = dynamic_cast<MessageParcel*>(&parcel);
    if (message == nullptr) {
        return false;
    }
    // Through a weak reference: an object nobody holds strongly must not be deleted by this call.
    sptr<IRemoteObject> self = wptr<IRemoteObject>(const_cast<IRemoteObject*>(this)).promote();
    return self != nullptr && message->WriteRemoteObject(self);
}

}  // namespace Tarvo
