#ifndef ZEL_DEVICE_SETTINGS_PROVIDER_H
#define ZEL_DEVICE_SETTINGS_PROVIDER_H

// The settings data provider of the emulated device (system ability 1114), over a real SQLite file
// "<data dir>/settings.db" holding the table SETTINGSDATA (KEYWORD text unique, VALUE text).
//
// Contract:
//  - Start() opens the file (keeping the rows it already has), writes the presets, and publishes
//    the provider from its own process. False, with nothing published, if the file cannot be used.
//  - Clients connect with DataShareHelper::Creator for TABLE_URI. Insert writes the row of the
//    bucket's KEYWORD (an existing key gets the new VALUE) and answers the row id; Update sets the
//    bucket's columns where the predicates hold and answers the rows changed (0 for a missing key);
//    Query answers the matching rows; -1 / null on any error. NotifyChange(uri) calls, one-way, the
//    observers registered for that URI.
//  - Every insert and update a connection asks for emits settings.write {op: "insert"|"update",
//    key, value, ok}, refused ones included (ok false).
//  - Down (SetUp(false)): new connections are refused and open ones fail every operation; up again,
//    open connections work again.
//  - Preset rows are written without a trace, before Start or at any time after.
//  - The destructor closes the file (connections still held by clients then fail).

#include <cstdint>
#include <memory>
#include <string>

#include "device_context.h"
#include "i_data_share_provider.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class SettingsStore;
class SettingsProviderStub;

class SettingsProvider {
public:
    static constexpr int32_t SA_ID = DataShare::DATA_SHARE_PROVIDER_SA_ID;
    static constexpr const char* TABLE_URI =
        "datashare:///com.tarvo.settingsdata/entry/settingsdata/SETTINGSDATA?Proxy=true";
    static constexpr const char* EXTENSION_URI = "datashare:///com.tarvo.settingsdata.DataAbility";
    static constexpr const char* DATABASE_FILE = "settings.db";

    explicit SettingsProvider(DeviceContext& ctx);
    ~SettingsProvider();
    SettingsProvider(const SettingsProvider&) = delete;
    SettingsProvider& operator=(const SettingsProvider&) = delete;

    bool Start(std::string* error = nullptr);
    // Scenario commands settings.down / settings.up.
    void SetUp(bool up);
    bool IsUp() const;
    // Scenario command settings.set: a row that is simply there. False if it could not be written.
    bool Preset(const std::string& key, const std::string& value);

    // The provider's process; null before Start.
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    std::shared_ptr<SettingsStore> store_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<SettingsProviderStub> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SETTINGS_PROVIDER_H
