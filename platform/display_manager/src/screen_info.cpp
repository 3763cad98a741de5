#include "screen_info.h"

namespace Tarvo::Vantel {

bool ScreenInfo::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (parcel.WriteUint64(id) && parcel.WriteUint32(width) && parcel.WriteUint32(height) &&
        parcel.WriteUint32(density)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool ScreenInfo::Unmarshalling(Parcel& parcel, ScreenInfo& info)
{
    size_t start = parcel.GetReadPosition();
    ScreenInfo read;
    if (parcel.ReadUint64(read.id) && parcel.ReadUint32(read.width) && parcel.ReadUint32(read.height) &&
        parcel.ReadUint32(read.density)) {
        info = read;
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

}  // namespace Tarvo::Vantel
