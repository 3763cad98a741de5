#ifndef ZEL_MANAGER_I_ZEL_CALLBACK_IMPL_H
#define ZEL_MANAGER_I_ZEL_CALLBACK_IMPL_H

#include "iremote_broker.h"

namespace Tarvo::Vantel {

// The adapter's own interface; it only names the object, requests carry the impersonated token.
class IZelCallbackImpl : public Tarvo::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"Tarvo.Vantel.IZelCallbackImpl");
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_I_ZEL_CALLBACK_IMPL_H
