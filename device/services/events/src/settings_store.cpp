#include "settings_store.h"

#include <algorithm>
#include <cstdint>

#include "settings_provider.h"

namespace Tarvo::Emu {
namespace {
constexpr int32_t FAILED = -1;
}  // namespace

SettingsStore::SettingsStore(Trace& trace) : trace_(trace) {}

bool SettingsStore::Open(const std::string& path, std::string* error)
{
    if (!database_.Open(path, error)) {
        return false;
    }
    std::vector<std::pair<std::string, std::string>> presets;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        presets.swap(presets_);
    }
    bool ok = true;
    for (const auto& [key, value] : presets) {
        ok = database_.Upsert(key, value) != FAILED && ok;
    }
    if (!ok && error != nullptr) {
        *error = path + ": a preset row could not be written";
    }
    return ok;
}

bool SettingsStore::Preset(const std::string& key, const std::string& value)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!database_.IsOpen()) {
            presets_.emplace_back(key, value);
            return true;
        }
    }
    return database_.Upsert(key, value) != FAILED;
}

SettingsDatabase::Pairs SettingsStore::Conditions(const DataShare::DataSharePredicates& predicates)
{
    SettingsDatabase::Pairs conditions;
    for (const auto& condition : predicates.GetConditions()) {
        conditions.emplace_back(condition.field, condition.value);
    }
    return conditions;
}

std::shared_ptr<DataShare::DataShareResultSet> SettingsStore::Query(const std::string& uri,
                                                                    const DataShare::DataSharePredicates& predicates,
                                                                    const std::vector<std::string>& columns,
                                                                    bool allowed)
{
    if (!allowed || !up_ || uri != SettingsProvider::TABLE_URI) {
        return nullptr;
    }
    std::optional<SettingsDatabase::Rows> rows = database_.Select(columns, Conditions(predicates));
    if (!rows.has_value()) {
        return nullptr;
    }
    return std::make_shared<DataShare::DataShareResultSet>(std::move(rows->columns), std::move(rows->cells));
}

int32_t SettingsStore::Insert(const std::string& uri, const DataShare::DataShareValuesBucket& bucket, bool allowed)
{
    std::optional<std::string> key = bucket.Get(SettingsDatabase::KEYWORD);
    std::optional<std::string> value = bucket.Get(SettingsDatabase::VALUE);
    bool known = std::all_of(bucket.GetAll().begin(), bucket.GetAll().end(), [](const auto& entry) {
        return entry.first == SettingsDatabase::KEYWORD || entry.first == SettingsDatabase::VALUE;
    });
    int64_t result = FAILED;
    if (allowed && up_ && uri == SettingsProvider::TABLE_URI && key.has_value() && known) {
        result = database_.Upsert(*key, value);
    }
    // Row ids of this small table stay far below the int32 range; anything else counts as failure.
    int32_t answer = result >= 0 && result <= INT32_MAX ? static_cast<int32_t>(result) : FAILED;
    TraceWrite("insert", key.value_or(""), value.value_or(""), answer != FAILED);
    return answer;
}

int32_t SettingsStore::Update(const std::string& uri, const DataShare::DataSharePredicates& predicates,
                              const DataShare::DataShareValuesBucket& bucket, bool allowed)
{
    SettingsDatabase::Pairs conditions = Conditions(predicates);
    auto keyCondition = std::find_if(conditions.begin(), conditions.end(), [](const auto& condition) {
        return condition.first == SettingsDatabase::KEYWORD;
    });
    std::string key = keyCondition != conditions.end() ? keyCondition->second : std::string();
    int64_t result = FAILED;
    if (allowed && up_ && uri == SettingsProvider::TABLE_URI) {
        result = database_.Update(bucket.GetAll(), conditions);
    }
    int32_t answer = result >= 0 && result <= INT32_MAX ? static_cast<int32_t>(result) : FAILED;
    TraceWrite("update", key, bucket.Get(SettingsDatabase::VALUE).value_or(""), answer != FAILED);
    return answer;
}

void SettingsStore::TraceWrite(const char* op, const std::string& key, const std::string& value, bool ok)
{
    trace_.Emit("settings.write", {{"op", std::string(op)}, {"key", key}, {"value", value}, {"ok", ok}});
}

void SettingsStore::AddObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto same = [&](const auto& entry) { return entry.first == uri && entry.second == observer; };
    if (std::none_of(observers_.begin(), observers_.end(), same)) {
        observers_.emplace_back(uri, observer);
    }
}

bool SettingsStore::RemoveObserver(const std::string& uri, const sptr<IRemoteObject>& observer)
{
    std::vector<std::pair<std::string, sptr<IRemoteObject>>> removed;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = std::find_if(observers_.begin(), observers_.end(),
                           [&](const auto& entry) { return entry.first == uri && entry.second == observer; });
    if (it == observers_.end()) {
        return false;
    }
    removed.push_back(std::move(*it));
    observers_.erase(it);
    return true;
}

std::vector<sptr<IRemoteObject>> SettingsStore::ObserversOf(const std::string& uri)
{
    std::vector<sptr<IRemoteObject>> found;
    std::vector<std::pair<std::string, sptr<IRemoteObject>>> dead;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = observers_.begin(); it != observers_.end();) {
        if (it->second->IsObjectDead()) {
            dead.push_back(std::move(*it));
            it = observers_.erase(it);
            continue;
        }
        if (it->first == uri) {
            found.push_back(it->second);
        }
        ++it;
    }
    return found;
}

}  // namespace Tarvo::Emu
