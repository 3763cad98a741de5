#ifndef TARVO_DATA_SHARE_DATA_SHARE_HELPER_H
#define TARVO_DATA_SHARE_DATA_SHARE_HELPER_H

// A client's connection to the settings data provider (DATA_SHARE_PROVIDER_SA_ID).
//
// Contract:
//  - Creator connects from the calling thread's process, passing the caller's token object, the
//    table URI and the extension URI along; null for a null token, or when the provider is not
//    obtainable or refuses the connection.
//  - Every later operation is one synchronous request on the connection. Query gives null on
//    failure (the reason in businessError, if given); Insert and Update give -1 on failure, else
//    the provider's result (Insert: the row's id, Update: rows changed).
//  - NotifyChange has the provider call, one-way, every observer registered for that URI.
//    Observers are told on a thread of their own process.
//  - Release() ends the connection: later operations fail (-1, null, nothing sent). True if the
//    provider acknowledged it. Dropping the helper without Release also ends the connection.
//  - Nothing here logs: the caller decides what a failure means. Thread-safe.

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "data_share_predicates.h"
#include "data_share_result_set.h"
#include "data_share_values_bucket.h"
#include "datashare_business_error.h"
#include "i_data_ability_observer.h"
#include "i_data_share_connection.h"
#include "uri.h"

namespace Tarvo::DataShare {

class DataShareHelper {
public:
    static std::shared_ptr<DataShareHelper> Creator(const sptr<IRemoteObject>& token, const std::string& strUri,
                                                    const std::string& extUri);

    ~DataShareHelper() = default;
    DataShareHelper(const DataShareHelper&) = delete;
    DataShareHelper& operator=(const DataShareHelper&) = delete;

    std::shared_ptr<DataShareResultSet> Query(Uri& uri, const DataSharePredicates& predicates,
                                              std::vector<std::string>& columns,
                                              DatashareBusinessError* businessError = nullptr);
    int Insert(Uri& uri, const DataShareValuesBucket& value);
    int Update(Uri& uri, const DataSharePredicates& predicates, const DataShareValuesBucket& value);
    void NotifyChange(const Uri& uri);
    // A null observer is ignored.
    void RegisterObserver(const Uri& uri, const sptr<AAFwk::IDataAbilityObserver>& dataObserver);
    void UnregisterObserver(const Uri& uri, const sptr<AAFwk::IDataAbilityObserver>& dataObserver);
    bool Release();

private:
    explicit DataShareHelper(sptr<IDataShareConnection> connection);
    // Null once released.
    sptr<IDataShareConnection> Connection();

    std::mutex mutex_;
    sptr<IDataShareConnection> connection_;
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_HELPER_H
