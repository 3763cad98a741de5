#ifndef TARVO_DATA_SHARE_I_DATA_SHARE_PROVIDER_H
#define TARVO_DATA_SHARE_I_DATA_SHARE_PROVIDER_H

// A data provider's entry object, obtainable from the service manager: it hands out one connection
// object (i_data_share_connection.h) per DataShareHelper.
//
// Wire format (synchronous, after the interface token):
//   CONNECT: string uri, string extension uri, caller token object
//            reply int32 result (RESULT_OK accepted), then the connection object when accepted

#include <cstdint>
#include <string>

#include "iremote_broker.h"
#include "iremote_object.h"

namespace Tarvo::DataShare {

// The settings data provider's system-ability id.
constexpr int32_t DATA_SHARE_PROVIDER_SA_ID = 1114;

class IDataShareProvider : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.datashare.IDataShareProvider");

    enum Code : uint32_t { CONNECT = 1 };
    enum Result : int32_t { RESULT_OK = 0, RESULT_REFUSED = 1 };

    // The connection's object; null when refused or unreachable.
    virtual sptr<IRemoteObject> Connect(const std::string& uri, const std::string& extUri,
                                        const sptr<IRemoteObject>& callerToken) = 0;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_I_DATA_SHARE_PROVIDER_H
