#ifndef TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_STUB_H
#define TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_STUB_H

// Base of a data provider's entry object: reads CONNECT (i_data_share_provider.h) and answers with
// the implementation's connection. A request without the token or a field is answered
// ERR_INVALID_VALUE without reaching the implementation.

#include "i_data_share_provider.h"
#include "iremote_stub.h"

namespace Tarvo::DataShare {

class DataShareProviderStub : public IRemoteStub<IDataShareProvider> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_STUB_H
