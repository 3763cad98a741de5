#ifndef ZEL_DEVICE_SETTINGS_PROVIDER_STUB_H
#define ZEL_DEVICE_SETTINGS_PROVIDER_STUB_H

#include <memory>

#include "data_share_provider_stub.h"
#include "settings_store.h"

namespace Tarvo::Emu {

// The settings provider's entry object: a new SettingsConnection for every accepted CONNECT. It
// refuses while the provider is down or its store is gone, and for any URI but the table's.
class SettingsProviderStub : public DataShare::DataShareProviderStub {
public:
    explicit SettingsProviderStub(std::weak_ptr<SettingsStore> store);

    sptr<IRemoteObject> Connect(const std::string& uri, const std::string& extUri,
                                const sptr<IRemoteObject>& callerToken) override;

private:
    const std::weak_ptr<SettingsStore> store_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SETTINGS_PROVIDER_STUB_H
