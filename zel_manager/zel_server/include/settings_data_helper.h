#ifndef ZEL_MANAGER_SETTINGS_DATA_HELPER_H
#define ZEL_MANAGER_SETTINGS_DATA_HELPER_H

// Reads and writes single rows (KEYWORD -> VALUE) of the settings database. One object per group
// of operations: it connects once at construction and never reconnects, so a database that
// becomes ready later is found by the next object.

#include <cstdint>
#include <memory>
#include <string>

#include "data_share_helper.h"

namespace Tarvo::Vantel {

class SettingsDataHelper {
public:
    SettingsDataHelper();
    ~SettingsDataHelper() = default;

    // 0 found (value set), -1 otherwise (value unchanged).
    int32_t Query(const std::string& key, std::string& value);
    // 0 inserted, -1 otherwise.
    int32_t Insert(const std::string& key, const std::string& value);
    // Insert-or-update: 0 updated or inserted, -1 otherwise.
    int32_t Update(const std::string& key, const std::string& value);

private:
    static std::shared_ptr<DataShare::DataShareHelper> CreateDataShareHelper();

    std::shared_ptr<DataShare::DataShareHelper> dataShareHelper_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_SETTINGS_DATA_HELPER_H
