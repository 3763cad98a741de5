#include "parameter_store.h"

#include <cstdio>
#include <fstream>

#include "i_parameter_service.h"

namespace Tarvo::Emu {
using system::IParameterService;

ParameterStore::ParameterStore(std::string path, Trace& trace) : path_(std::move(path)), trace_(trace) {}

void ParameterStore::Load()
{
    std::ifstream in(path_);
    std::lock_guard<std::mutex> lock(mutex_);
    loaded_ = true;
    std::string line;
    while (std::getline(in, line)) {
        size_t equals = line.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        std::string key = line.substr(0, equals);
        std::string value = line.substr(equals + 1);
        if (IParameterService::IsValidParameter(key, value)) {
            values_.try_emplace(std::move(key), std::move(value));
        }
    }
    SaveLocked();
}

bool ParameterStore::Set(const std::string& key, const std::string& value, bool traced)
{
    if (!IParameterService::IsValidParameter(key, value)) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    values_[key] = value;
    SaveLocked();
    // Under the lock, so the trace shows sets in the order they were applied; Emit never calls out.
    if (traced) {
        trace_.Emit("param.set", {{"key", key}, {"value", value}});
    }
    return true;
}

std::optional<std::string> ParameterStore::Get(const std::string& key) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = values_.find(key);
    if (it == values_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void ParameterStore::SaveLocked() const
{
    // Before the load, writing would wipe out what is stored.
    if (path_.empty() || !loaded_) {
        return;
    }
    const std::string temporary = path_ + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        for (const auto& [key, value] : values_) {
            out << key << '=' << value << '\n';
        }
        if (!out.flush()) {
            return;  // the previous file stays as it was
        }
    }
    std::rename(temporary.c_str(), path_.c_str());
}

}  // namespace Tarvo::Emu
