#include "app_category_info.h"

#include <memory>
#include <utility>

namespace QuillonServiceClient {

AppCategoryInfo::AppCategoryInfo(std::string bundle, int32_t type) : bundleName(std::move(bundle)), packageType(type) {}

AppCategoryInfo::AppCategoryInfo(const AppCategoryInfo& other)
    : bundleName(other.bundleName), packageType(other.packageType)
{
}

AppCategoryInfo& AppCategoryInfo::operator=(const AppCategoryInfo& other)
{
    bundleName = other.bundleName;
    packageType = other.packageType;
    return *this;
}

bool AppCategoryInfo::Marshalling(Tarvo::Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (parcel.WriteString(bundleName) && parcel.WriteInt32(packageType)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool AppCategoryInfo::ReadFromParcel(Tarvo::Parcel& parcel)
{
    size_t start = parcel.GetReadPosition();
    if (parcel.ReadString(bundleName) && parcel.ReadInt32(packageType)) {
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

AppCategoryInfo* AppCategoryInfo::Unmarshalling(Tarvo::Parcel& parcel)
{
    auto info = std::make_unique<AppCategoryInfo>();
    return info->ReadFromParcel(parcel) ? info.release() : nullptr;
}

}  // namespace QuillonServiceClient
