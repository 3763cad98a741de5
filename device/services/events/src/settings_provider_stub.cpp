#include "settings_provider_stub.h"

#include <utility>

#include "settings_connection.h"
#include "settings_provider.h"

namespace Tarvo::Emu {

SettingsProviderStub::SettingsProviderStub(std::weak_ptr<SettingsStore> store) : store_(std::move(store)) {}

sptr<IRemoteObject> SettingsProviderStub::Connect(const std::string& uri, const std::string&,
                                                  const sptr<IRemoteObject>& callerToken)
{
    std::shared_ptr<SettingsStore> store = store_.lock();
    if (store == nullptr || !store->IsUp() || callerToken == nullptr || uri != SettingsProvider::TABLE_URI) {
        return nullptr;
    }
    // Requests run on the provider's threads, so the provider's process owns the connection.
    return sptr<IRemoteObject>(new SettingsConnection(store));
}

}  // namespace Tarvo::Emu
