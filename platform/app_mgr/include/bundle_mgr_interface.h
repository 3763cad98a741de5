#ifndef TARVO_APP_MGR_BUNDLE_MGR_INTERFACE_H
#define TARVO_APP_MGR_BUNDLE_MGR_INTERFACE_H

// The bundle manager, system ability BUNDLE_MGR_SERVICE_SYS_ABILITY_ID: what is installed.
// Clients write their requests by hand, so the wire format is the contract:
//
//   GET_NAME_FOR_UID (synchronous):
//     data  = interface token BUNDLE_MGR_DESCRIPTOR (string16), int32 uid
//     reply = int32 result (BUNDLE_MGR_OK on success), then string bundleName only on success
//   A wrong token or a missing uid is refused: a non-zero status and no reply.

#include <cstdint>

namespace Tarvo::AppExecFwk {

constexpr int32_t BUNDLE_MGR_SERVICE_SYS_ABILITY_ID = 401;
constexpr const char16_t* BUNDLE_MGR_DESCRIPTOR = u"tarvo.appexecfwk.BundleMgr";

enum BundleMgrInterfaceCode : uint32_t {
    GET_NAME_FOR_UID = 9,
};

enum BundleMgrResult : int32_t {
    BUNDLE_MGR_OK = 0,
    BUNDLE_MGR_ERR_UNKNOWN_UID = 1,
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_BUNDLE_MGR_INTERFACE_H
