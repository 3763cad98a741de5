#include "data_share_connection_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::DataShare {
namespace {
const BrokerDelegator<DataShareConnectionProxy> delegator;
}

DataShareConnectionProxy::DataShareConnectionProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<IDataShareConnection>(impl)
{
}

int32_t DataShareConnectionProxy::Call(uint32_t code, MessageParcel& data, MessageParcel& reply, int32_t& result)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageOption option(MessageOption::TF_SYNC);
    int32_t status = remote->SendRequest(code, data, reply, option);
    if (status != ERR_NONE) {
        return status;
    }
    return reply.ReadInt32(result) ? ERR_NONE : ERR_INVALID_VALUE;
}

int32_t DataShareConnectionProxy::CallForResult(uint32_t code, MessageParcel& data)
{
    MessageParcel reply;
    int32_t result = E_ERROR;
    int32_t status = Call(code, data, reply, result);
    return status == ERR_NONE ? result : status;
}

std::shared_ptr<DataShareResultSet> DataShareConnectionProxy::Query(const std::string& uri,
                                                                    const DataSharePredicates& predicates,
                                                                    const std::vector<std::string>& columns,
                                                                    int32_t& status)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri) || !predicates.Marshalling(data) ||
        !data.WriteStringVector(columns)) {
        status = E_ERROR;
        return nullptr;
    }
    MessageParcel reply;
    int32_t result = E_ERROR;
    status = Call(QUERY, data, reply, result);
    if (status != ERR_NONE || result != E_OK) {
        status = status != ERR_NONE ? status : result;
        return nullptr;
    }
    auto resultSet = std::make_shared<DataShareResultSet>();
    if (!DataShareResultSet::Unmarshalling(reply, *resultSet)) {
        status = E_ERROR;
        return nullptr;
    }
    return resultSet;
}

int32_t DataShareConnectionProxy::Insert(const std::string& uri, const DataShareValuesBucket& value)
{
    MessageParcel data;
    MessageParcel reply;
    int32_t result = E_ERROR;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri) || !value.Marshalling(data) ||
        Call(INSERT, data, reply, result) != ERR_NONE) {
        return E_ERROR;
    }
    return result;
}

int32_t DataShareConnectionProxy::Update(const std::string& uri, const DataSharePredicates& predicates,
                                         const DataShareValuesBucket& value)
{
    MessageParcel data;
    MessageParcel reply;
    int32_t result = E_ERROR;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri) || !predicates.Marshalling(data) ||
        !value.Marshalling(data) || Call(UPDATE, data, reply, result) != ERR_NONE) {
        return E_ERROR;
    }
    return result;
}

int32_t DataShareConnectionProxy::NotifyChange(const std::string& uri)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri)) {
        return E_ERROR;
    }
    return CallForResult(NOTIFY_CHANGE, data);
}

int32_t DataShareConnectionProxy::CallObserver(uint32_t code, const std::string& uri,
                                               const sptr<IRemoteObject>& observer)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri) || !data.WriteRemoteObject(observer)) {
        return E_ERROR;
    }
    return CallForResult(code, data);
}

int32_t DataShareConnectionProxy::RegisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    return CallObserver(REGISTER_OBSERVER, uri, observer);
}

int32_t DataShareConnectionProxy::UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    return CallObserver(UNREGISTER_OBSERVER, uri, observer);
}

int32_t DataShareConnectionProxy::Release()
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor())) {
        return E_ERROR;
    }
    return CallForResult(RELEASE, data);
}

}  // namespace Tarvo::DataShare
