#include "render_service_proxy.h"

#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {
namespace {
const BrokerDelegator<RenderServiceProxy> delegator;
}

RenderServiceProxy::RenderServiceProxy(const sptr<IRemoteObject>& impl) : IRemoteProxy<IRenderService>(impl) {}

void RenderServiceProxy::Send(uint32_t code, MessageParcel& data)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    remote->SendRequest(code, data, reply, option);
}

void RenderServiceProxy::NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList)
{
    MessageParcel data;
    if (data.WriteInterfaceToken(GetDescriptor()) && data.WriteUint32(listSize) &&
        data.WriteStringVector(packageList)) {
        Send(NOTIFY_PACKAGE_EVENT, data);
    }
}

void RenderServiceProxy::NotifyRefreshRateEvent(const EventInfo& eventInfo)
{
    MessageParcel data;
    if (data.WriteInterfaceToken(GetDescriptor()) && data.WriteString(eventInfo.eventName) &&
        data.WriteBool(eventInfo.eventStatus) && data.WriteUint32(eventInfo.minRefreshRate) &&
        data.WriteUint32(eventInfo.maxRefreshRate) && data.WriteString(eventInfo.description)) {
        Send(NOTIFY_REFRESH_RATE_EVENT, data);
    }
}

void RenderServiceProxy::NotifyLightFactorStatus(bool isSafe)
{
    MessageParcel data;
    if (data.WriteInterfaceToken(GetDescriptor()) && data.WriteBool(isSafe)) {
        Send(NOTIFY_LIGHT_FACTOR_STATUS, data);
    }
}

}  // namespace Tarvo::Vantel
