#ifndef ZEL_DEVICE_SETTINGS_CONNECTION_H
#define ZEL_DEVICE_SETTINGS_CONNECTION_H

#include <atomic>
#include <memory>

#include "data_share_connection_stub.h"
#include "settings_store.h"

namespace Tarvo::Emu {

// One client's connection to the settings provider, owned by the provider's process. It works on
// the provider's store while the store exists and the provider is up, until released.
class SettingsConnection : public DataShare::DataShareConnectionStub {
public:
    explicit SettingsConnection(std::weak_ptr<SettingsStore> store);

    std::shared_ptr<DataShare::DataShareResultSet> Query(const std::string& uri,
                                                         const DataShare::DataSharePredicates& predicates,
                                                         const std::vector<std::string>& columns,
                                                         int32_t& status) override;
    int32_t Insert(const std::string& uri, const DataShare::DataShareValuesBucket& value) override;
    int32_t Update(const std::string& uri, const DataShare::DataSharePredicates& predicates,
                   const DataShare::DataShareValuesBucket& value) override;
    // Calls every observer of the URI, one-way.
    int32_t NotifyChange(const std::string& uri) override;
    int32_t RegisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) override;
    int32_t UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer) override;
    int32_t Release() override;

private:
    // The store while this connection may use it: not released and the provider up.
    std::shared_ptr<SettingsStore> UsableStore();

    const std::weak_ptr<SettingsStore> store_;
    std::atomic<bool> released_{false};
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SETTINGS_CONNECTION_H
