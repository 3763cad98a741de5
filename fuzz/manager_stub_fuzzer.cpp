// The manager's stub as any process may reach it through the driver: an arbitrary code, token and
// fields from a caller of each kind. The stub answers 0, 3 or -1 (or the platform's handler
// answers), a refused request leaves the reply empty, and the service hears only requests with
// the right token from a caller allowed to make them.
//
// Input: byte 0 picks the caller (low 2 bits: system application, native process, shell, ordinary
// application), bit 2 puts the right interface token first, bit 3 offers a game's callback object
// to the parcel; bytes 1-4 are the code (little-endian); the rest are the parcel's bytes.

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "fuzz_support.h"
#include "ipc_types.h"
#include "iremote_stub.h"
#include "message_option.h"
#include "platform_test_support.h"
#include "zel_callback_stub.h"
#include "zel_manager_stub.h"

namespace Tarvo::Vantel {
namespace {
using Security::AccessToken::TOKEN_HAP;
using Security::AccessToken::TOKEN_NATIVE;
using Security::AccessToken::TOKEN_SHELL;

// The service's operations only count that the stub reached them.
class CountingManager : public ZelManagerStub {
public:
    void SetScene(const std::string&, const std::string&, uint32_t) override { ++calls; }
    int32_t ChangeResolutionMode(int32_t, int32_t) override { return static_cast<int32_t>(++calls); }
    uint32_t SetThermalPolicy(std::map<uint32_t, uint32_t>) override { return ++calls; }
    uint32_t RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback) override
    {
        FUZZ_REQUIRE(callback != nullptr);
        return ++calls;
    }
    uint32_t SetGameFpsForThermalControl(const std::string&, uint32_t) override { return ++calls; }

    std::atomic<uint32_t> calls = 0;
};

struct World {
    std::shared_ptr<VirtualProcess> service = MakeProcess(200, TOKEN_NATIVE, false);
    std::shared_ptr<VirtualProcess> game = MakeProcess(400, TOKEN_HAP, false);
    std::shared_ptr<VirtualProcess> callers[4] = {
        MakeProcess(300, TOKEN_HAP, true), MakeProcess(301, TOKEN_NATIVE, false), MakeProcess(302, TOKEN_SHELL, false),
        MakeProcess(303, TOKEN_HAP, false)};
    sptr<CountingManager> manager;
    sptr<IRemoteObject> callback;

    World()
    {
        {
            ScopedProcess scope(service);
            manager = new CountingManager();
        }
        ScopedProcess scope(game);
        callback = sptr<IRemoteObject>(new ZelCallbackStub());
    }

    static std::shared_ptr<VirtualProcess> MakeProcess(int32_t pid, Security::AccessToken::ATokenTypeEnum type,
                                                       bool systemApp)
    {
        return VirtualProcess::Create(Tarvo::Test::MakeIdentity(pid, 20010000 + pid, type, systemApp, "fuzz"));
    }
};

World& TheWorld()
{
    static World* world = new World();  // lives as long as the driver's threads may use it
    return *world;
}

bool Admitted(uint8_t callerKind, uint32_t code)
{
    bool ordinary = callerKind == 3;
    return code == 3 ? ordinary : !ordinary;
}
}  // namespace
}  // namespace Tarvo::Vantel

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Tarvo;
    using namespace Tarvo::Vantel;
    if (size < 5) {
        return 0;
    }
    World& world = TheWorld();
    uint8_t callerKind = data[0] & 0x03;
    uint32_t code = Fuzz::CodeOf(data + 1);
    const std::u16string* token = (data[0] & 0x04) != 0 ? &ZelManagerStub::GetDescriptor() : nullptr;
    sptr<IRemoteObject> object = (data[0] & 0x08) != 0 ? world.callback : nullptr;
    MessageParcel request = Fuzz::RequestOf(token, data + 5, size - 5, object);
    bool rightToken = MessageParcel(request).ReadInterfaceToken() == ZelManagerStub::GetDescriptor();
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    uint32_t before = world.manager->calls;
    int status = 0;
    {
        ScopedProcess scope(world.callers[callerKind]);
        status = sptr<IRemoteObject>(world.manager)->SendRequest(code, request, reply, option);
    }
    bool reached = world.manager->calls != before;
    // A dump whose arguments do not read is refused by the platform's own handler.
    bool badDump = code == DUMP_TRANSACTION && status == ERR_INVALID_VALUE;
    FUZZ_REQUIRE(status == ERR_NONE || status == ZelManagerStub::ERR_REFUSED || status == ZelManagerStub::ERR_PARCEL ||
                 status == IPC_STUB_UNKNOW_TRANS_ERR || badDump);
    FUZZ_REQUIRE(status != ZelManagerStub::ERR_REFUSED || reply.GetDataSize() == 0);
    FUZZ_REQUIRE(!reached || (rightToken && code <= 4 && Admitted(callerKind, code) && status == ERR_NONE));
    FUZZ_REQUIRE(rightToken || status == ZelManagerStub::ERR_REFUSED);
    return 0;
}
