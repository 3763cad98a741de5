#include "app_state_data.h"

#include <memory>

namespace Tarvo::AppExecFwk {

AppStateData::AppStateData(const AppStateData& other)
    : bundleName(other.bundleName), pid(other.pid), state(other.state), isFocused(other.isFocused), uid(other.uid)
{
}

AppStateData& AppStateData::operator=(const AppStateData& other)
{
    bundleName = other.bundleName;
    pid = other.pid;
    state = other.state;
    isFocused = other.isFocused;
    uid = other.uid;
    return *this;
}

bool AppStateData::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (parcel.WriteString(bundleName) && parcel.WriteInt32(pid) && parcel.WriteInt32(state) &&
        parcel.WriteBool(isFocused) && parcel.WriteInt32(uid)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool AppStateData::ReadFromParcel(Parcel& parcel)
{
    size_t start = parcel.GetReadPosition();
    if (parcel.ReadString(bundleName) && parcel.ReadInt32(pid) && parcel.ReadInt32(state) &&
        parcel.ReadBool(isFocused) && parcel.ReadInt32(uid)) {
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

AppStateData* AppStateData::Unmarshalling(Parcel& parcel)
{
    auto data = std::make_unique<AppStateData>();
    return data->ReadFromParcel(parcel) ? data.release() : nullptr;
}

}  // namespace Tarvo::AppExecFwk
