#include "zel_bundle_mgr_adapter.h"

#include "bundle_mgr_interface.h"
#include "if_system_ability_manager.h"
#include "iservice_registry.h"
#include "message_option.h"
#include "message_parcel.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
constexpr int REQUEST_WAIT_SECONDS = 8;
}  // namespace

ZelBundleMgrAdapter* ZelBundleMgrAdapter::GetInstance()
{
    static ZelBundleMgrAdapter instance;
    return &instance;
}

bool ZelBundleMgrAdapter::ConnectService()
{
    if (remoteObject_ != nullptr) {
        return true;
    }
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return false;
    }
    remoteObject_ = samgr->GetSystemAbility(AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);
    return remoteObject_ != nullptr;
}

bool ZelBundleMgrAdapter::GetPkgNameByUid(int32_t uid, std::string& pkgName)
{
    ZEL_LOGD("ZelBundleMgrAdapter::GetPkgNameByUid uid = %{public}d", uid);
    if (!ConnectService()) {
        ZEL_LOGE("ZelBundleMgrAdapter::GetPkgNameByUid connect service faild.");
        return false;
    }
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, REQUEST_WAIT_SECONDS);
    if (!data.WriteInterfaceToken(AppExecFwk::BUNDLE_MGR_DESCRIPTOR)) {
        ZEL_LOGE("ZelBundleMgrAdapter::GetPkgNameByUid write InterfaceToken fail");
        return false;
    }
    if (!data.WriteInt32(uid)) {
        ZEL_LOGE("ZelBundleMgrAdapter::GetPkgNameByUid write uid fail");
        return false;
    }
    int32_t ret = remoteObject_->SendRequest(AppExecFwk::GET_NAME_FOR_UID, data, reply, option);
    int32_t result = -1;
    std::string name;
    if (ret == 0 && reply.ReadInt32(result) && result == AppExecFwk::BUNDLE_MGR_OK && reply.ReadString(name)) {
        pkgName = name;
        return true;
    }
    ZEL_LOGE("ZelBundleMgrAdapter::GetPkgNameByUid SendRequest error code %{public}d", ret);
    return false;
}

}  // namespace Tarvo::Vantel
