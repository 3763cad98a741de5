#ifndef TARVO_APP_MGR_APP_STATE_DATA_H
#define TARVO_APP_MGR_APP_STATE_DATA_H

// What the application manager tells its observers about one application.
//
// Wire format (Marshalling, without the parcelable presence flag): string bundleName, int32 pid,
// int32 state (an ApplicationState), bool isFocused, int32 uid.

#include <cstdint>
#include <string>

#include "parcel.h"

namespace Tarvo::AppExecFwk {

enum class ApplicationState : int32_t {
    APP_STATE_CREATE = 0,
    APP_STATE_READY = 1,
    APP_STATE_FOREGROUND = 2,
    APP_STATE_FOCUS = 3,
    APP_STATE_BACKGROUND = 4,
    APP_STATE_TERMINATED = 5,
};

struct AppStateData : public Parcelable {
    std::string bundleName;
    int32_t pid = 0;
    int32_t state = 0;
    bool isFocused = false;
    int32_t uid = 0;

    AppStateData() = default;
    // Copies the fields only: reference counts belong to each object.
    AppStateData(const AppStateData& other);
    AppStateData& operator=(const AppStateData& other);
    ~AppStateData() override = default;

    bool Marshalling(Parcel& parcel) const override;
    // False (read position unchanged) if any field is missing.
    bool ReadFromParcel(Parcel& parcel);
    // A new object owned by the caller, or null.
    static AppStateData* Unmarshalling(Parcel& parcel);
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APP_STATE_DATA_H
