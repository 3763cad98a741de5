#ifndef TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_PROXY_H
#define TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_PROXY_H

#include "i_data_share_connection.h"
#include "iremote_proxy.h"

namespace Tarvo::DataShare {

// Sends the requests of i_data_share_connection.h.
class DataShareConnectionProxy : public IRemoteProxy<IDataShareConnection> {
public:
    explicit DataShareConnectionProxy(const sptr<IRemoteObject>& impl);

    std::shared_ptr<DataShareResultSet> Query(const std::string& uri, const DataSharePredicates& predicates,
                                              const std::vector<std::string>& columns, int32_t& status) override;
    int32_t Insert(const std::string& uri, const DataShareValuesBucket& value) override;
    int32_t Update(const std::string& uri, const DataSharePredicates& predicates,
                   const DataShareValuesBucket& value) override;
    int32_t NotifyChange(const std::string& uri) override;
    int32_t RegisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) override;
    int32_t UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) override;
    int32_t Release() override;

private:
    // The transport's code, else the reply's first int32 in `result`.
    int32_t Call(uint32_t code, MessageParcel& data, MessageParcel& reply, int32_t& result);
    int32_t CallForResult(uint32_t code, MessageParcel& data);
    // With an observer argument.
    int32_t CallObserver(uint32_t code, const std::string& uri, const sptr<IRemoteObject>& observer);
};

}  // namespace Tarvo::DataShare

#endif  // TARVO_DATA_SHARE_DATA_SHARE_CONNECTION_PROXY_H
