#include "common_event_data.h"

#include <utility>

namespace Tarvo::EventFwk {

CommonEventData::CommonEventData(const AAFwk::Want& want) : want_(want) {}

CommonEventData::CommonEventData(const AAFwk::Want& want, int32_t code, const std::string& data)
    : want_(want), code_(code), data_(data)
{
}

bool CommonEventData::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (want_.Marshalling(parcel) && parcel.WriteInt32(code_) && parcel.WriteString(data_)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool CommonEventData::Unmarshalling(Parcel& parcel, CommonEventData& data)
{
    size_t start = parcel.GetReadPosition();
    CommonEventData read;
    if (AAFwk::Want::Unmarshalling(parcel, read.want_) && parcel.ReadInt32(read.code_) &&
        parcel.ReadString(read.data_)) {
        data = std::move(read);
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

}  // namespace Tarvo::EventFwk
