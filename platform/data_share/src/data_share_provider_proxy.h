#ifndef TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_PROXY_H
#define TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_PROXY_H

#include "i_data_share_provider.h"
#include "iremote_proxy.h"

namespace Tarvo::DataShare {

// Sends CONNECT (i_data_share_provider.h); any failure reads as a refusal.
class DataShareProviderProxy : public IRemoteProxy<IDataShareProvider> {
public:
    explicit DataShareProviderProxy(const sptr<IRemoteObject>& impl);

    sptr<IRemoteObject> Connect(const std::string& uri, const std::string& extUri,
                                const sptr<IRemoteObject>& callerToken) override;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_PROVIDER_PROXY_H
