#ifndef TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H
#define TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H

#include "i_display_manager_service.h"

namespace Tarvo::Vantel {

// The display manager service as the calling thread's process sees it; null while the service
// manager or the service cannot be reached. Looked up on every call: services come and go.
sptr<IDisplayManagerService> GetDisplayManagerService();

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H
