#include "settings_connection.h"

#include <utility>

#include "i_data_ability_observer.h"

namespace Tarvo::Emu {

using DataShare::IDataShareConnection;

SettingsConnection::SettingsConnection(std::weak_ptr<SettingsStore> store) : store_(std::move(store)) {}

std::shared_ptr<SettingsStore> SettingsConnection::UsableStore()
{
    std::shared_ptr<SettingsStore> store = store_.lock();
    return store != nullptr && store->IsUp() && !released_ ? store : nullptr;
}

std::shared_ptr<DataShare::DataShareResultSet> SettingsConnection::Query(
    const std::string& uri, const DataShare::DataSharePredicates& predicates, const std::vector<std::string>& columns,
    int32_t& status)
{
    std::shared_ptr<SettingsStore> store = store_.lock();
    auto resultSet = store != nullptr ? store->Query(uri, predicates, columns, !released_) : nullptr;
    status = resultSet != nullptr ? IDataShareConnection::E_OK : IDataShareConnection::E_ERROR;
    return resultSet;
}

int32_t SettingsConnection::Insert(const std::string& uri, const DataShare::DataShareValuesBucket& value)
{
    std::shared_ptr<SettingsStore> store = store_.lock();
    return store != nullptr ? store->Insert(uri, value, !released_) : IDataShareConnection::E_ERROR;
}

int32_t SettingsConnection::Update(const std::string& uri, const DataShare::DataSharePredicates& predicates,
                                   const DataShare::DataShareValuesBucket& value)
{
    std::shared_ptr<SettingsStore> store = store_.lock();
    return store != nullptr ? store->Update(uri, predicates, value, !released_) : IDataShareConnection::E_ERROR;
}

int32_t SettingsConnection::NotifyChange(const std::string& uri)
{
    std::shared_ptr<SettingsStore> store = UsableStore();
    if (store == nullptr) {
        return IDataShareConnection::E_ERROR;
    }
    for (const sptr<IRemoteObject>& object : store->ObserversOf(uri)) {
        sptr<AAFwk::IDataAbilityObserver> observer = iface_cast<AAFwk::IDataAbilityObserver>(object);
        if (observer != nullptr) {
            observer->OnChange();
        }
    }
    return IDataShareConnection::E_OK;
}

int32_t SettingsConnection::RegisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    std::shared_ptr<SettingsStore> store = UsableStore();
    if (store == nullptr) {
        return IDataShareConnection::E_ERROR;
    }
    store->AddObserver(uri, observer);
    return IDataShareConnection::E_OK;
}

int32_t SettingsConnection::UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    std::shared_ptr<SettingsStore> store = UsableStore();
    return store != nullptr && store->RemoveObserver(uri, observer) ? IDataShareConnection::E_OK
                                                                    : IDataShareConnection::E_ERROR;
}

int32_t SettingsConnection::Release()
{
    return released_.exchange(true) ? IDataShareConnection::E_ERROR : IDataShareConnection::E_OK;
}

}  // namespace Tarvo::Emu
