#include "fuzz_support.h"

#include "hilog.h"

namespace Tarvo::Fuzz {

uint32_t CodeOf(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
           (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
}

MessageParcel RequestOf(const std::u16string* token, const uint8_t* bytes, size_t size,
                        const sptr<IRemoteObject>& object)
{
    MessageParcel data;
    if (object != nullptr) {
        FUZZ_REQUIRE(data.WriteRemoteObject(object));
        data.RewindWrite(0);
    }
    if (token != nullptr) {
        data.WriteInterfaceToken(*token);
    }
    data.WriteBuffer(bytes, size);
    return data;
}

}  // namespace Tarvo::Fuzz

// Every target's: the platform log would print each line on stderr, where the fuzzer's own output goes.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tarvo::HiviewDFX::HiLogOutput::SetStderrEnabled(false);
    return 0;
}
