#include "settings_database.h"

#include <sqlite3.h>

#include <memory>

namespace Tarvo::Emu {
namespace {
constexpr int64_t FAILED = -1;

struct StatementDeleter {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

bool KnownColumn(const std::string& name)
{
    return name == SettingsDatabase::KEYWORD || name == SettingsDatabase::VALUE;
}

// " WHERE A = ?n AND B = ?m" with parameters numbered from `first`; false for an unknown column.
bool AppendWhere(std::string& sql, const SettingsDatabase::Pairs& conditions, int first)
{
    for (size_t i = 0; i < conditions.size(); ++i) {
        if (!KnownColumn(conditions[i].first)) {
            return false;
        }
        sql +=
            (i == 0 ? " WHERE " : " AND ") + conditions[i].first + " = ?" + std::to_string(first + static_cast<int>(i));
    }
    return true;
}

Statement Prepare(sqlite3* db, const std::string& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (db == nullptr || sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return Statement(statement);
}

bool BindText(sqlite3_stmt* statement, int index, const std::string& text)
{
    return sqlite3_bind_text(statement, index, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT) ==
           SQLITE_OK;
}

bool BindPairs(sqlite3_stmt* statement, const SettingsDatabase::Pairs& pairs, int first)
{
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (!BindText(statement, first + static_cast<int>(i), pairs[i].second)) {
            return false;
        }
    }
    return true;
}

std::string Cell(sqlite3_stmt* statement, int column)
{
    const unsigned char* text = sqlite3_column_text(statement, column);
    return text != nullptr ? std::string(reinterpret_cast<const char*>(text),
                                         static_cast<size_t>(sqlite3_column_bytes(statement, column)))
                           : std::string();
}
}  // namespace

SettingsDatabase::~SettingsDatabase()
{
    Close();
}

bool SettingsDatabase::Open(const std::string& path, std::string* error)
{
    Close();
    std::lock_guard<std::mutex> lock(mutex_);
    sqlite3* db = nullptr;
    int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    const char* create = "CREATE TABLE IF NOT EXISTS SETTINGSDATA (KEYWORD TEXT NOT NULL UNIQUE, VALUE TEXT)";
    if (rc == SQLITE_OK) {
        rc = sqlite3_exec(db, create, nullptr, nullptr, nullptr);
    }
    if (rc != SQLITE_OK) {
        if (error != nullptr) {
            *error = path + ": " + (db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
        }
        sqlite3_close_v2(db);
        return false;
    }
    db_ = db;
    return true;
}

void SettingsDatabase::Close()
{
    std::lock_guard<std::mutex> lock(mutex_);
    // Every statement is finalised when its operation ends, so the close is complete here.
    sqlite3_close_v2(db_);
    db_ = nullptr;
}

bool SettingsDatabase::IsOpen() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return db_ != nullptr;
}

int64_t SettingsDatabase::Upsert(const std::string& key, const std::optional<std::string>& value)
{
    std::lock_guard<std::mutex> lock(mutex_);
    Statement statement = Prepare(db_,
                                  "INSERT INTO SETTINGSDATA (KEYWORD, VALUE) VALUES (?1, ?2) "
                                  "ON CONFLICT (KEYWORD) DO UPDATE SET VALUE = excluded.VALUE RETURNING rowid");
    if (statement == nullptr || !BindText(statement.get(), 1, key)) {
        return FAILED;
    }
    int bound = value.has_value() ? sqlite3_bind_text(statement.get(), 2, value->c_str(),
                                                      static_cast<int>(value->size()), SQLITE_TRANSIENT)
                                  : sqlite3_bind_null(statement.get(), 2);
    if (bound != SQLITE_OK || sqlite3_step(statement.get()) != SQLITE_ROW) {
        return FAILED;
    }
    int64_t rowId = sqlite3_column_int64(statement.get(), 0);
    return sqlite3_step(statement.get()) == SQLITE_DONE ? rowId : FAILED;
}

int64_t SettingsDatabase::Update(const Pairs& assignments, const Pairs& conditions)
{
    if (assignments.empty()) {
        return FAILED;
    }
    std::string sql = "UPDATE SETTINGSDATA SET ";
    for (size_t i = 0; i < assignments.size(); ++i) {
        if (!KnownColumn(assignments[i].first)) {
            return FAILED;
        }
        sql += (i == 0 ? "" : ", ") + assignments[i].first + " = ?" + std::to_string(i + 1);
    }
    if (!AppendWhere(sql, conditions, static_cast<int>(assignments.size()) + 1)) {
        return FAILED;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    Statement statement = Prepare(db_, sql);
    if (statement == nullptr || !BindPairs(statement.get(), assignments, 1) ||
        !BindPairs(statement.get(), conditions, static_cast<int>(assignments.size()) + 1) ||
        sqlite3_step(statement.get()) != SQLITE_DONE) {
        return FAILED;
    }
    return sqlite3_changes(db_);
}

std::optional<SettingsDatabase::Rows> SettingsDatabase::Select(const std::vector<std::string>& columns,
                                                               const Pairs& conditions)
{
    Rows rows;
    rows.columns = columns.empty() ? std::vector<std::string>{KEYWORD, VALUE} : columns;
    std::string sql = "SELECT ";
    for (size_t i = 0; i < rows.columns.size(); ++i) {
        if (!KnownColumn(rows.columns[i])) {
            return std::nullopt;
        }
        sql += (i == 0 ? "" : ", ") + rows.columns[i];
    }
    sql += " FROM SETTINGSDATA";
    if (!AppendWhere(sql, conditions, 1)) {
        return std::nullopt;
    }
    sql += " ORDER BY rowid";
    std::lock_guard<std::mutex> lock(mutex_);
    Statement statement = Prepare(db_, sql);
    if (statement == nullptr || !BindPairs(statement.get(), conditions, 1)) {
        return std::nullopt;
    }
    int rc = SQLITE_ROW;
    while ((rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
        std::vector<std::string> row;
        for (size_t i = 0; i < rows.columns.size(); ++i) {
            row.push_back(Cell(statement.get(), static_cast<int>(i)));
        }
        rows.cells.push_back(std::move(row));
    }
    return rc == SQLITE_DONE ? std::optional<Rows>(std::move(rows)) : std::nullopt;
}

}  // namespace Tarvo::Emu
