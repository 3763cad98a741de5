#include "element_name.h"

#include <utility>

namespace Tarvo::AppExecFwk {

ElementName::ElementName(std::string deviceId, std::string bundleName, std::string abilityName)
    : deviceId_(std::move(deviceId)), bundleName_(std::move(bundleName)), abilityName_(std::move(abilityName))
{
}

bool ElementName::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (parcel.WriteString(deviceId_) && parcel.WriteString(bundleName_) && parcel.WriteString(abilityName_)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool ElementName::Unmarshalling(Parcel& parcel, ElementName& element)
{
    size_t start = parcel.GetReadPosition();
    ElementName read;
    if (parcel.ReadString(read.deviceId_) && parcel.ReadString(read.bundleName_) &&
        parcel.ReadString(read.abilityName_)) {
        element = std::move(read);
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

}  // namespace Tarvo::AppExecFwk
