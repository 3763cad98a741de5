#include "data_share_connection_stub.h"

#include "ipc_types.h"

namespace Tarvo::DataShare {
namespace {
int Answer(MessageParcel& reply, int32_t result)
{
    return reply.WriteInt32(result) ? ERR_NONE : ERR_INVALID_VALUE;
}
}  // namespace

int DataShareConnectionStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                             MessageOption& option)
{
    if (code < QUERY || code > RELEASE) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case QUERY:
            return HandleQuery(data, reply);
        case INSERT:
            return HandleInsert(data, reply);
        case UPDATE:
            return HandleUpdate(data, reply);
        case NOTIFY_CHANGE: {
            std::string uri;
            return data.ReadString(uri) ? Answer(reply, NotifyChange(uri)) : ERR_INVALID_VALUE;
        }
        case RELEASE:
            return Answer(reply, Release());
        default:
            return HandleObserver(code, data, reply);
    }
}

int DataShareConnectionStub::HandleQuery(MessageParcel& data, MessageParcel& reply)
{
    std::string uri;
    DataSharePredicates predicates;
    std::vector<std::string> columns;
    if (!data.ReadString(uri) || !DataSharePredicates::Unmarshalling(data, predicates) ||
        !data.ReadStringVector(&columns)) {
        return ERR_INVALID_VALUE;
    }
    int32_t status = E_ERROR;
    std::shared_ptr<DataShareResultSet> resultSet = Query(uri, predicates, columns, status);
    if (resultSet == nullptr) {
        return Answer(reply, status != E_OK ? status : E_ERROR);
    }
    return reply.WriteInt32(E_OK) && resultSet->Marshalling(reply) ? ERR_NONE : ERR_INVALID_VALUE;
}

int DataShareConnectionStub::HandleInsert(MessageParcel& data, MessageParcel& reply)
{
    std::string uri;
    DataShareValuesBucket bucket;
    if (!data.ReadString(uri) || !DataShareValuesBucket::Unmarshalling(data, bucket)) {
        return ERR_INVALID_VALUE;
    }
    return Answer(reply, Insert(uri, bucket));
}

int DataShareConnectionStub::HandleUpdate(MessageParcel& data, MessageParcel& reply)
{
    std::string uri;
    DataSharePredicates predicates;
    DataShareValuesBucket bucket;
    if (!data.ReadString(uri) || !DataSharePredicates::Unmarshalling(data, predicates) ||
        !DataShareValuesBucket::Unmarshalling(data, bucket)) {
        return ERR_INVALID_VALUE;
    }
    return Answer(reply, Update(uri, predicates, bucket));
}

int DataShareConnectionStub::HandleObserver(uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    std::string uri;
    if (!data.ReadString(uri)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> observer = data.ReadRemoteObject();
    if (observer == nullptr) {
        return ERR_INVALID_VALUE;
    }
    return Answer(reply,
                  code == REGISTER_OBSERVER ? RegisterObserver(uri, observer) : UnregisterObserver(uri, observer));
}

}  // namespace Tarvo::DataShare
