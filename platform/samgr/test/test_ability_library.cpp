// A service library as the host sees one: two abilities registered from static initialisers.
#include "ipc_object_stub.h"
#include "system_ability.h"

namespace {

class TestAbility : public Tarvo::SystemAbility, public Tarvo::IPCObjectStub {
    DECLARE_SYSTEM_ABILITY(TestAbility)
public:
    TestAbility(int32_t id, bool runOnCreate) : SystemAbility(id, runOnCreate), IPCObjectStub(u"test.Ability") {}

protected:
    void OnStart() override { Publish(this); }
};

REGISTER_SYSTEM_ABILITY_BY_ID(TestAbility, 4242, true)
const bool lazyRegistered = Tarvo::SystemAbility::MakeAndRegisterAbility(new TestAbility(4243, false));

}  // namespace
