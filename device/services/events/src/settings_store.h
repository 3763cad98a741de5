#ifndef ZEL_DEVICE_SETTINGS_STORE_H
#define ZEL_DEVICE_SETTINGS_STORE_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "data_share_predicates.h"
#include "data_share_result_set.h"
#include "data_share_values_bucket.h"
#include "iremote_object.h"
#include "settings_database.h"
#include "trace.h"

namespace Tarvo::Emu {

// What the settings provider's objects share: the database, whether the provider is up, and the
// observers of change notifications.
//
// Contract:
//  - Query, Insert and Update serve the table URI only, and only while up and allowed (the caller's
//    connection is open); otherwise they fail (null, -1).
//  - Every Insert and Update emits settings.write {op, key, value, ok}: key is the KEYWORD of the
//    bucket (insert) or of the predicates (update), value the bucket's VALUE ("" when absent), ok
//    whether the result was not -1.
//  - Presets made before Open are written when it succeeds; they are never traced.
//  - Thread-safe; nothing is called out with a lock held.
class SettingsStore {
public:
    explicit SettingsStore(Trace& trace);

    bool Open(const std::string& path, std::string* error);
    bool Preset(const std::string& key, const std::string& value);
    void SetUp(bool up) { up_ = up; }
    bool IsUp() const { return up_; }

    std::shared_ptr<DataShare::DataShareResultSet> Query(const std::string& uri,
                                                         const DataShare::DataSharePredicates& predicates,
                                                         const std::vector<std::string>& columns, bool allowed);
    int32_t Insert(const std::string& uri, const DataShare::DataShareValuesBucket& bucket, bool allowed);
    int32_t Update(const std::string& uri, const DataShare::DataSharePredicates& predicates,
                   const DataShare::DataShareValuesBucket& bucket, bool allowed);

    // Registering an object twice for one URI keeps one registration.
    void AddObserver(const std::string& uri, const sptr<IRemoteObject>& observer);
    // False if it was not registered for the URI.
    bool RemoveObserver(const std::string& uri, const sptr<IRemoteObject>& observer);
    // The live observers of the URI; dead ones are forgotten.
    std::vector<sptr<IRemoteObject>> ObserversOf(const std::string& uri);

private:
    static SettingsDatabase::Pairs Conditions(const DataShare::DataSharePredicates& predicates);
    void TraceWrite(const char* op, const std::string& key, const std::string& value, bool ok);

    Trace& trace_;
    SettingsDatabase database_;
    std::atomic<bool> up_{true};

    std::mutex mutex_;
    std::vector<std::pair<std::string, std::string>> presets_;  // until the database opens
    std::vector<std::pair<std::string, sptr<IRemoteObject>>> observers_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SETTINGS_STORE_H
