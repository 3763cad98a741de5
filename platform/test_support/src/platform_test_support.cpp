#include "platform_test_support.h"

#include <cstdio>
#include <vector>

#include "access_token_kit.h"
#include "ipc_skeleton.h"
#include "tokenid_kit.h"

namespace Tarvo::Test {
using namespace Security::AccessToken;
namespace {

std::vector<uint8_t> Bytes(const std::string& hex)
{
    std::vector<uint8_t> bytes;
    unsigned value = 0;
    for (size_t i = 0; i + 1 < hex.size(); i += 3) {
        sscanf(hex.c_str() + i, "%2x", &value);
        bytes.push_back(static_cast<uint8_t>(value));
    }
    return bytes;
}

}  // namespace

ProcessIdentity MakeIdentity(int32_t pid, int32_t uid, ATokenTypeEnum type, bool systemApp, const std::string& name)
{
    AccessTokenID token = AccessTokenKit::MakeTokenId(type, static_cast<uint32_t>(pid));
    return {pid, uid, token, TokenIdKit::MakeFullTokenId(token, systemApp), name};
}

std::shared_ptr<VirtualProcess> MakeProcess(int32_t pid, const std::string& name, ATokenTypeEnum type)
{
    AccessTokenID token = AccessTokenKit::MakeTokenId(type, 0);
    return VirtualProcess::Create({pid, pid, token, token, name});
}

std::string Hex(const Parcel& parcel, size_t from)
{
    std::string out;
    char byte[4];
    for (size_t i = from; i < parcel.GetDataSize(); ++i) {
        snprintf(byte, sizeof(byte), out.empty() ? "%02X" : " %02X", parcel.GetData()[i]);
        out += byte;
    }
    return out;
}

std::string HexAfterToken(MessageParcel data, const std::u16string& token)
{
    if (data.ReadInterfaceToken() != token) {
        return "bad token";
    }
    return Hex(data, data.GetReadPosition());
}

MessageParcel ParcelFromHex(const std::string& hex)
{
    std::vector<uint8_t> bytes = Bytes(hex);
    MessageParcel parcel;
    parcel.ParseFrom(bytes.data(), bytes.size());
    return parcel;
}

ScopedServiceManager::ScopedServiceManager(std::shared_ptr<VirtualProcess> process, bool install)
    : process_(std::move(process))
{
    {
        ScopedProcess scope(process_ != nullptr ? process_ : VirtualProcess::Current());
        registry_ = new SystemAbilityManager();
    }
    if (install) {
        Install();
    }
}

ScopedServiceManager::~ScopedServiceManager()
{
    Uninstall();
}

void ScopedServiceManager::Install()
{
    IPCSkeleton::SetContextObject(registry_);
}

void ScopedServiceManager::Uninstall()
{
    IPCSkeleton::SetContextObject(nullptr);
}

}  // namespace Tarvo::Test
