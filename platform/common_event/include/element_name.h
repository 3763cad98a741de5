#ifndef TARVO_COMMON_EVENT_ELEMENT_NAME_H
#define TARVO_COMMON_EVENT_ELEMENT_NAME_H

// Names an ability: the device it runs on, its bundle and the ability itself. Any part may be empty.
//
// Wire format: string deviceId, string bundleName, string abilityName.

#include <string>

#include "parcel.h"

namespace Tarvo::AppExecFwk {

class ElementName {
public:
    ElementName() = default;
    ElementName(std::string deviceId, std::string bundleName, std::string abilityName);

    std::string GetDeviceID() const { return deviceId_; }
    void SetDeviceID(const std::string& deviceId) { deviceId_ = deviceId; }
    std::string GetBundleName() const { return bundleName_; }
    void SetBundleName(const std::string& bundleName) { bundleName_ = bundleName; }
    std::string GetAbilityName() const { return abilityName_; }
    void SetAbilityName(const std::string& abilityName) { abilityName_ = abilityName; }

    bool operator==(const ElementName& other) const = default;

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged, element untouched) when the fields are not all there.
    static bool Unmarshalling(Parcel& parcel, ElementName& element);

private:
    std::string deviceId_;
    std::string bundleName_;
    std::string abilityName_;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_COMMON_EVENT_ELEMENT_NAME_H
