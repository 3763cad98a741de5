#ifndef TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_STUB_H
#define TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_STUB_H

// Base of a provider's connection object: reads the requests of i_data_share_connection.h and
// answers with the implementation's results. A request without the token or a field is answered
// ERR_INVALID_VALUE without reaching the implementation.

#include "i_data_share_connection.h"
#include "iremote_stub.h"

namespace Tarvo::DataShare {

class DataShareConnectionStub : public IRemoteStub<IDataShareConnection> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandleQuery(MessageParcel& data, MessageParcel& reply);
    int HandleInsert(MessageParcel& data, MessageParcel& reply);
    int HandleUpdate(MessageParcel& data, MessageParcel& reply);
    int HandleObserver(uint32_t code, MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_STUB_H
