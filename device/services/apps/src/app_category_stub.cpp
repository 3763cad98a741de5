#include "app_category_stub.h"

#include "app_category_interface.h"
#include "ipc_types.h"

namespace Tarvo::Emu {
using namespace QuillonServiceClient;

AppCategoryStub::AppCategoryStub(const PackageCatalog& catalog)
    : IPCObjectStub(APP_CATEGORY_DESCRIPTOR), catalog_(catalog)
{
}

int AppCategoryStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (code != GET_CATEGORY) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    std::vector<std::string> bundles;
    std::string caller;
    if (data.ReadInterfaceToken() != APP_CATEGORY_DESCRIPTOR || !data.ReadStringVector(&bundles) ||
        !data.ReadString(caller)) {
        return ERR_INVALID_VALUE;
    }
    if (!up_) {
        return reply.WriteInt32(CATEGORY_ERR_SERVICE_DOWN) ? ERR_NONE : ERR_INVALID_VALUE;
    }
    std::vector<AppCategoryInfo> infos = Classify(bundles);
    if (!reply.WriteInt32(CATEGORY_OK) || !reply.WriteInt32(static_cast<int32_t>(infos.size()))) {
        return ERR_INVALID_VALUE;
    }
    for (const AppCategoryInfo& info : infos) {
        if (!info.Marshalling(reply)) {
            return ERR_INVALID_VALUE;
        }
    }
    return ERR_NONE;
}

std::vector<AppCategoryInfo> AppCategoryStub::Classify(const std::vector<std::string>& bundles) const
{
    std::vector<Package> packages;
    if (bundles.empty()) {
        packages = catalog_.All();
    }
    for (const std::string& bundle : bundles) {
        if (std::optional<Package> package = catalog_.FindByBundle(bundle)) {
            packages.push_back(*package);
        }
    }
    std::vector<AppCategoryInfo> infos;
    for (const Package& package : packages) {
        infos.emplace_back(package.bundle, package.game ? PACKAGE_TYPE_GAME : PACKAGE_TYPE_APP);
    }
    return infos;
}

}  // namespace Tarvo::Emu
