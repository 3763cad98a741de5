#include "data_ability_observer_proxy.h"

#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::AAFwk {
namespace {
const BrokerDelegator<DataAbilityObserverProxy> delegator;
}

DataAbilityObserverProxy::DataAbilityObserverProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<IDataAbilityObserver>(impl)
{
}

void DataAbilityObserverProxy::OnChange()
{
    sptr<IRemoteObject> remote = Remote();
    MessageParcel data;
    if (remote == nullptr || !data.WriteInterfaceToken(GetDescriptor())) {
        return;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    remote->SendRequest(ON_CHANGE, data, reply, option);
}

}  // namespace Tarvo::AAFwk
