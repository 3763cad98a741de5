// The callback objects the service and the games serve: a game's ZelCallbackStub and the
// service's ZelCallbackAdapter, each with an arbitrary code, token and fields. The game is told a
// frame rate only for a request with its token and a readable rate; the adapter answers 0 to
// everything and runs a task only for the right token and a code that has one.
//
// Input: byte 0 picks the object (bit 0: the adapter) and bit 1 puts the right interface token
// first; bytes 1-4 are the code (little-endian); the rest are the parcel's bytes.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "message_option.h"
#include "zel_callback_adapter.h"
#include "zel_callback_stub.h"

namespace Tarvo::Vantel {
namespace {
const std::u16string kAdapterDescriptor = u"tarvo.powermgr.IDisplayBrightnessCallback";

class CountingGame : public ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        ++calls;
        lastFps = targetFps;
        return 0;
    }
    uint32_t calls = 0;
    uint32_t lastFps = 0;
};

// Tasks shaped like the service's own: fields read one after the other, a reply, and a task that throws.
sptr<ZelCallbackAdapter> MakeAdapter(uint32_t& runs)
{
    sptr<ZelCallbackAdapter> adapter = new ZelCallbackAdapter(kAdapterDescriptor);
    adapter->AddTask(0, [&runs](MessageParcel& data, MessageParcel&) {
        ++runs;
        uint32_t type = 0;
        bool state = false;
        if (data.ReadUint32(type)) {
            data.ReadBool(state);
        }
    });
    adapter->AddTask(1, [&runs](MessageParcel& data, MessageParcel& reply) {
        ++runs;
        std::vector<std::string> names;
        if (data.ReadStringVector(&names)) {
            reply.WriteStringVector(names);
        }
    });
    adapter->AddTask(2, [&runs](MessageParcel& data, MessageParcel&) {
        ++runs;
        throw std::runtime_error(data.ReadString());
    });
    return adapter;
}

void FuzzGame(uint32_t code, MessageParcel& data)
{
    static sptr<CountingGame> game = new CountingGame();
    bool rightToken = MessageParcel(data).ReadInterfaceToken() == ZelCallbackStub::GetDescriptor();
    MessageParcel fields(data);
    fields.ReadInterfaceToken();
    uint32_t fps = 0;
    bool readable = fields.ReadUint32(fps);
    uint32_t before = game->calls;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    int status = game->OnRemoteRequest(code, data, reply, option);
    bool told = game->calls != before;
    FUZZ_REQUIRE(rightToken || (status == ZelCallbackStub::ERR_REFUSED && !told));
    FUZZ_REQUIRE(told == (rightToken && code == 0 && readable));
    FUZZ_REQUIRE(!told || (game->lastFps == fps && status == 0));
    FUZZ_REQUIRE(!rightToken || code != 0 || readable || status == ZelCallbackStub::ERR_PARCEL);
}

void FuzzAdapter(uint32_t code, MessageParcel& data)
{
    static uint32_t runs = 0;
    static sptr<ZelCallbackAdapter> adapter = MakeAdapter(runs);
    bool rightToken = MessageParcel(data).ReadInterfaceToken() == kAdapterDescriptor;
    uint32_t before = runs;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    FUZZ_REQUIRE(adapter->OnRemoteRequest(code, data, reply, option) == 0);
    FUZZ_REQUIRE((runs != before) == (rightToken && code <= 2));
}
}  // namespace
}  // namespace Tarvo::Vantel

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Tarvo::Vantel;
    if (size < 5) {
        return 0;
    }
    bool adapter = (data[0] & 0x01) != 0;
    bool withToken = (data[0] & 0x02) != 0;
    uint32_t code = Tarvo::Fuzz::CodeOf(data + 1);
    const std::u16string* token = adapter ? &kAdapterDescriptor : &ZelCallbackStub::GetDescriptor();
    Tarvo::MessageParcel request = Tarvo::Fuzz::RequestOf(withToken ? token : nullptr, data + 5, size - 5);
    if (adapter) {
        FuzzAdapter(code, request);
    } else {
        FuzzGame(code, request);
    }
    return 0;
}
