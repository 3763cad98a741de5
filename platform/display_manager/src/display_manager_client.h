#ifndef TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H
#define TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H

#include "i_display_manager_service.h"

namespace Tarvo::Vantel {

// The display manager service as the calling thread's process sees it; null while the service
// manager or the service cannot be reached. Kept while it lives and stays obtainable.
sptr<IDisplayManagerService> GetDisplayManagerService();

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_SRC_DISPLAY_MANAGER_CLIENT_H
