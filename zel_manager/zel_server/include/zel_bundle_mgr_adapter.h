#ifndef ZEL_MANAGER_ZEL_BUNDLE_MGR_ADAPTER_H
#define ZEL_MANAGER_ZEL_BUNDLE_MGR_ADAPTER_H

#include <cstdint>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace Tarvo::Vantel {

// Client of the bundle manager (401): turns a calling uid into its package name. The remote object
// is cached on the first successful connection and kept for the life of the process.
class ZelBundleMgrAdapter : public RefBase {
public:
    static ZelBundleMgrAdapter* GetInstance();
    ZelBundleMgrAdapter() = default;
    ~ZelBundleMgrAdapter() override = default;
    ZelBundleMgrAdapter(const ZelBundleMgrAdapter&) = delete;
    ZelBundleMgrAdapter& operator=(const ZelBundleMgrAdapter&) = delete;

    bool ConnectService();
    // `pkgName` is written only when the name is found.
    bool GetPkgNameByUid(int32_t uid, std::string& pkgName);

private:
    sptr<IRemoteObject> remoteObject_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_BUNDLE_MGR_ADAPTER_H
