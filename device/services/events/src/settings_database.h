#ifndef ZEL_DEVICE_SETTINGS_DATABASE_H
#define ZEL_DEVICE_SETTINGS_DATABASE_H

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct sqlite3;

namespace Tarvo::Emu {

// The settings table (SETTINGSDATA: KEYWORD text unique, VALUE text) in one SQLite file.
//
// Contract: only the columns KEYWORD and VALUE are known; a name outside them fails the operation
// (names are never pasted into SQL unchecked, values are always bound). A NULL cell reads as "".
// Thread-safe; every operation fails while the file is not open.
class SettingsDatabase {
public:
    using Pairs = std::vector<std::pair<std::string, std::string>>;
    struct Rows {
        std::vector<std::string> columns;
        std::vector<std::vector<std::string>> cells;
    };

    static constexpr const char* KEYWORD = "KEYWORD";
    static constexpr const char* VALUE = "VALUE";

    SettingsDatabase() = default;
    ~SettingsDatabase();
    SettingsDatabase(const SettingsDatabase&) = delete;
    SettingsDatabase& operator=(const SettingsDatabase&) = delete;

    // Opens (creating if needed) the file and the table; an open file is closed first.
    bool Open(const std::string& path, std::string* error);
    void Close();
    bool IsOpen() const;

    // Writes the row of the key; an existing key gets the new value. The row id, -1 on error.
    int64_t Upsert(const std::string& key, const std::optional<std::string>& value);
    // Sets the columns of the rows where every column equals its value. Rows changed, -1 on error.
    int64_t Update(const Pairs& assignments, const Pairs& conditions);
    // The columns (empty: KEYWORD and VALUE) of the rows where every condition holds, in row-id order.
    std::optional<Rows> Select(const std::vector<std::string>& columns, const Pairs& conditions);

private:
    mutable std::mutex mutex_;
    sqlite3* db_ = nullptr;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SETTINGS_DATABASE_H
