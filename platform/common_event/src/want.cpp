#include "want.h"

#include <utility>

namespace Tarvo::AAFwk {

Want& Want::SetAction(const std::string& action)
{
    action_ = action;
    return *this;
}

Want& Want::SetElement(const AppExecFwk::ElementName& element)
{
    element_ = element;
    return *this;
}

Want& Want::SetBundle(const std::string& bundleName)
{
    element_.SetBundleName(bundleName);
    return *this;
}

bool Want::Marshalling(Parcel& parcel) const
{
    size_t start = parcel.GetWritePosition();
    if (parcel.WriteString(action_) && element_.Marshalling(parcel)) {
        return true;
    }
    parcel.RewindWrite(start);
    return false;
}

bool Want::Unmarshalling(Parcel& parcel, Want& want)
{
    size_t start = parcel.GetReadPosition();
    Want read;
    if (parcel.ReadString(read.action_) && AppExecFwk::ElementName::Unmarshalling(parcel, read.element_)) {
        want = std::move(read);
        return true;
    }
    parcel.RewindRead(start);
    return false;
}

}  // namespace Tarvo::AAFwk
