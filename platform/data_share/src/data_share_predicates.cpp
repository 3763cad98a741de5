#include "data_share_predicates.h"

#include <utility>

namespace Tarvo::DataShare {
namespace {
// Each condition takes at least its operation and two empty strings.
constexpr size_t kMinConditionBytes = 3 * sizeof(int32_t);
}  // namespace

DataSharePredicates& DataSharePredicates::EqualTo(const std::string& field, const std::string& value)
{
    conditions_.push_back({EQUAL_TO, field, value});
    return *this;
}

bool DataSharePredicates::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    bool ok = parcel.WriteInt32(static_cast<int32_t>(conditions_.size()));
    for (size_t i = 0; ok && i < conditions_.size(); ++i) {
        ok = parcel.WriteInt32(conditions_[i].operation) && parcel.WriteString(conditions_[i].field) &&
             parcel.WriteString(conditions_[i].value);
    }
    if (!ok) {
        parcel.RewindWrite(start);
    }
    return ok;
}

bool DataSharePredicates::Unmarshalling(Parcel& parcel, DataSharePredicates& predicates)
{
    size_t start = parcel.GetReadPosition();
    int32_t count = 0;
    bool ok = parcel.ReadInt32(count) && count >= 0 &&
              static_cast<size_t>(count) <= parcel.GetReadableBytes() / kMinConditionBytes;
    DataSharePredicates read;
    for (int32_t i = 0; ok && i < count; ++i) {
        int32_t operation = 0;
        Condition condition;
        ok = parcel.ReadInt32(operation) && operation == EQUAL_TO && parcel.ReadString(condition.field) &&
             parcel.ReadString(condition.value);
        read.conditions_.push_back(std::move(condition));
    }
    if (!ok) {
        parcel.RewindRead(start);
        return false;
    }
    predicates = std::move(read);
    return true;
}

}  // namespace Tarvo::DataShare
