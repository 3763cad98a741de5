#include "category_manager.h"

#include "app_category_interface.h"
#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "system_ability_cache.h"

namespace QuillonServiceClient {
namespace {
using Tarvo::MessageParcel;

// The smallest AppCategoryInfo on the wire: an empty string (8 bytes) and an int32.
constexpr size_t MIN_INFO_BYTES = 12;

int32_t ReadInfos(MessageParcel& reply, std::vector<AppCategoryInfo>& infos)
{
    int32_t result = CATEGORY_OK;
    if (!reply.ReadInt32(result)) {
        return CATEGORY_ERR_BAD_REPLY;
    }
    if (result != CATEGORY_OK) {
        return result;
    }
    int32_t count = 0;
    // The count comes from another process: never trust it beyond the bytes that are there.
    if (!reply.ReadInt32(count) || count < 0 ||
        static_cast<size_t>(count) > reply.GetReadableBytes() / MIN_INFO_BYTES) {
        return CATEGORY_ERR_BAD_REPLY;
    }
    std::vector<AppCategoryInfo> read(static_cast<size_t>(count));
    for (AppCategoryInfo& info : read) {
        if (!info.ReadFromParcel(reply)) {
            return CATEGORY_ERR_BAD_REPLY;
        }
    }
    infos = std::move(read);
    return CATEGORY_OK;
}
}  // namespace

int32_t CategoryManager::GetCategoryFromSystem(std::vector<std::string>& bundleNames,
                                               std::vector<AppCategoryInfo>& infos, std::string caller)
{
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* service = new Tarvo::SystemAbilityCache(APP_CATEGORY_SA_ID);
    Tarvo::sptr<Tarvo::IRemoteObject> remote = service->GetObject();
    if (remote == nullptr) {
        return CATEGORY_ERR_UNAVAILABLE;
    }
    MessageParcel data;
    if (!data.WriteInterfaceToken(APP_CATEGORY_DESCRIPTOR) || !data.WriteStringVector(bundleNames) ||
        !data.WriteString(caller)) {
        return CATEGORY_ERR_UNAVAILABLE;
    }
    MessageParcel reply;
    Tarvo::MessageOption option(Tarvo::MessageOption::TF_SYNC);
    if (remote->SendRequest(GET_CATEGORY, data, reply, option) != Tarvo::ERR_NONE) {
        return CATEGORY_ERR_UNAVAILABLE;
    }
    return ReadInfos(reply, infos);
}

}  // namespace QuillonServiceClient
