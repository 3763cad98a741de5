#ifndef TARVO_COMMON_EVENT_WANT_H
#define TARVO_COMMON_EVENT_WANT_H

// What an event or a request is about: an action and the element it concerns.
//
// Wire format: string action, then the element (element_name.h).

#include <string>

#include "element_name.h"
#include "parcel.h"

namespace Tarvo::AAFwk {

class Want {
public:
    Want() = default;

    Want& SetAction(const std::string& action);
    const std::string& GetAction() const { return action_; }
    Want& SetElement(const AppExecFwk::ElementName& element);
    AppExecFwk::ElementName GetElement() const { return element_; }
    // The bundle is the element's bundle name.
    Want& SetBundle(const std::string& bundleName);
    std::string GetBundle() const { return element_.GetBundleName(); }

    bool operator==(const Want& other) const = default;

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged, want untouched) when the fields are not all there.
    static bool Unmarshalling(Parcel& parcel, Want& want);

private:
    std::string action_;
    AppExecFwk::ElementName element_;
};

}  // namespace Tarvo::AAFwk

#endif  // TARVO_COMMON_EVENT_WANT_H
