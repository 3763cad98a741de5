#ifndef TARVO_APP_CATEGORY_APP_CATEGORY_INFO_H
#define TARVO_APP_CATEGORY_APP_CATEGORY_INFO_H

// The category of one package. Wire format: string bundleName, int32 packageType.

#include <cstdint>
#include <string>

#include "parcel.h"

namespace QuillonServiceClient {

class AppCategoryInfo : public Tarvo::Parcelable {
public:
    std::string bundleName;
    int32_t packageType = 0;  // PACKAGE_TYPE_GAME for a game

    AppCategoryInfo() = default;
    AppCategoryInfo(std::string bundle, int32_t type);
    // Copies the fields only: reference counts belong to each object.
    AppCategoryInfo(const AppCategoryInfo& other);
    AppCategoryInfo& operator=(const AppCategoryInfo& other);
    ~AppCategoryInfo() override = default;

    bool Marshalling(Tarvo::Parcel& parcel) const override;
    // False (read position unchanged) if a field is missing.
    bool ReadFromParcel(Tarvo::Parcel& parcel);
    static AppCategoryInfo* Unmarshalling(Tarvo::Parcel& parcel);
};

}  // namespace QuillonServiceClient

#endif  // TARVO_APP_CATEGORY_APP_CATEGORY_INFO_H
