#include "data_share_values_bucket.h"

#include <algorithm>

namespace Tarvo::DataShare {
namespace {
// Each column takes at least two empty strings.
constexpr size_t kMinColumnBytes = 2 * sizeof(int32_t);
}  // namespace

void DataShareValuesBucket::Put(const std::string& column, const std::string& value)
{
    auto it = std::find_if(values_.begin(), values_.end(), [&](const auto& entry) { return entry.first == column; });
    if (it != values_.end()) {
        it->second = value;
    } else {
        values_.emplace_back(column, value);
    }
}

std::optional<std::string> DataShareValuesBucket::Get(const std::string& column) const
{
    auto it = std::find_if(values_.begin(), values_.end(), [&](const auto& entry) { return entry.first == column; });
    return it != values_.end() ? std::optional<std::string>(it->second) : std::nullopt;
}

bool DataShareValuesBucket::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    bool ok = parcel.WriteInt32(static_cast<int32_t>(values_.size()));
    for (size_t i = 0; ok && i < values_.size(); ++i) {
        ok = parcel.WriteString(values_[i].first) && parcel.WriteString(values_[i].second);
    }
    if (!ok) {
        parcel.RewindWrite(start);
    }
    return ok;
}

bool DataShareValuesBucket::Unmarshalling(Parcel& parcel, DataShareValuesBucket& bucket)
{
    size_t start = parcel.GetReadPosition();
    int32_t count = 0;
    bool ok = parcel.ReadInt32(count) && count >= 0 &&
              static_cast<size_t>(count) <= parcel.GetReadableBytes() / kMinColumnBytes;
    DataShareValuesBucket read;
    for (int32_t i = 0; ok && i < count; ++i) {
        std::string column;
        std::string value;
        ok = parcel.ReadString(column) && parcel.ReadString(value) && !read.Get(column).has_value();
        read.values_.emplace_back(std::move(column), std::move(value));
    }
    if (!ok) {
        parcel.RewindRead(start);
        return false;
    }
    bucket = std::move(read);
    return true;
}

}  // namespace Tarvo::DataShare
