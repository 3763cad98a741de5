#ifndef TARVO_TEST_SUPPORT_PLATFORM_TEST_SUPPORT_H
#define TARVO_TEST_SUPPORT_PLATFORM_TEST_SUPPORT_H

// Helpers the platform's and the device's tests share: processes, parcel bytes as text and a
// service manager of the test's own.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "access_token.h"
#include "message_parcel.h"
#include "system_ability_manager.h"
#include "virtual_process.h"

namespace Tarvo::Test {

// An identity as a device hands them out: the token's serial is the pid, and a system
// application has the bit in its full token id.
ProcessIdentity MakeIdentity(int32_t pid, int32_t uid, Security::AccessToken::ATokenTypeEnum type, bool systemApp,
                             const std::string& name);

// A process whose uid is its pid and whose token has the type alone (serial 0), for tests where
// only the kind of caller matters.
std::shared_ptr<VirtualProcess> MakeProcess(
    int32_t pid, const std::string& name,
    Security::AccessToken::ATokenTypeEnum type = Security::AccessToken::TOKEN_NATIVE);

// "0A 00 00 00 ...": the bytes from `from` on, as the wire carries them.
std::string Hex(const Parcel& parcel, size_t from = 0);
// The bytes after the interface token; "bad token" when the parcel starts with another one.
std::string HexAfterToken(MessageParcel data, const std::u16string& token);
// A parcel of the bytes written as Hex writes them.
MessageParcel ParcelFromHex(const std::string& hex);

// A service manager made in its own process and installed as the driver's context object; it is
// uninstalled when the scope ends. Made in the calling thread's process when `process` is null.
class ScopedServiceManager {
public:
    explicit ScopedServiceManager(std::shared_ptr<VirtualProcess> process = MakeProcess(10, "samgr"),
                                  bool install = true);
    ~ScopedServiceManager();
    ScopedServiceManager(const ScopedServiceManager&) = delete;
    ScopedServiceManager& operator=(const ScopedServiceManager&) = delete;

    void Install();
    void Uninstall();

    // An ability made in `owner` and added under `id`.
    template <typename Ability, typename... Args>
    sptr<Ability> AddAbility(int32_t id, const std::shared_ptr<VirtualProcess>& owner, Args&&... args)
    {
        ScopedProcess scope(owner);
        sptr<Ability> ability = new Ability(std::forward<Args>(args)...);
        registry_->AddSystemAbility(id, ability);
        return ability;
    }

    const sptr<SystemAbilityManager>& Registry() const { return registry_; }
    SystemAbilityManager* operator->() const { return registry_.GetRefPtr(); }
    const std::shared_ptr<VirtualProcess>& Process() const { return process_; }

private:
    std::shared_ptr<VirtualProcess> process_;
    sptr<SystemAbilityManager> registry_;
};

}  // namespace Tarvo::Test

#endif  // TARVO_TEST_SUPPORT_PLATFORM_TEST_SUPPORT_H
