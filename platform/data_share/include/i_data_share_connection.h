#ifndef TARVO_DATA_SHARE_I_DATA_SHARE_CONNECTION_H
#define TARVO_DATA_SHARE_I_DATA_SHARE_CONNECTION_H

// One client's connection to a data provider. Every operation is a synchronous request.
//
// Wire format (after the interface token; E_OK is 0, E_ERROR is -1):
//   QUERY:               string uri, predicates, string vector columns (empty: all)
//                        reply int32 status; on E_OK the result set (data_share_result_set.h)
//   INSERT:              string uri, values bucket         reply int32 row id, E_ERROR on failure
//   UPDATE:              string uri, predicates, bucket    reply int32 rows changed, E_ERROR on failure
//   NOTIFY_CHANGE:       string uri                        reply int32 status
//   REGISTER_OBSERVER:   string uri, observer object       reply int32 status
//   UNREGISTER_OBSERVER: string uri, observer object       reply int32 status
//   RELEASE:             -                                 reply int32 status; later requests fail

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "data_share_predicates.h"
#include "data_share_result_set.h"
#include "data_share_values_bucket.h"
#include "iremote_broker.h"
#include "iremote_object.h"

namespace Tarvo::DataShare {

class IDataShareConnection : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.datashare.IDataShareConnection");

    enum Code : uint32_t {
        QUERY = 1,
        INSERT = 2,
        UPDATE = 3,
        NOTIFY_CHANGE = 4,
        REGISTER_OBSERVER = 5,
        UNREGISTER_OBSERVER = 6,
        RELEASE = 7,
    };
    static constexpr int32_t E_OK = 0;
    static constexpr int32_t E_ERROR = -1;

    // Null on failure, with the reason in status (E_ERROR or a transport code).
    virtual std::shared_ptr<DataShareResultSet> Query(const std::string& uri, const DataSharePredicates& predicates,
                                                      const std::vector<std::string>& columns, int32_t& status) = 0;
    // E_ERROR on any failure, the transport's included.
    virtual int32_t Insert(const std::string& uri, const DataShareValuesBucket& value) = 0;
    virtual int32_t Update(const std::string& uri, const DataSharePredicates& predicates,
                           const DataShareValuesBucket& value) = 0;
    // E_OK, E_ERROR or a transport code.
    virtual int32_t NotifyChange(const std::string& uri) = 0;
    virtual int32_t RegisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) = 0;
    virtual int32_t UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) = 0;
    virtual int32_t Release() = 0;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_I_DATA_SHARE_CONNECTION_H
