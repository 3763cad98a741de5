#include "display_power_manager_service.h"

#include <gtest/gtest.h>

#include <mutex>

#include "display_power_mgr_interface.h"
#include "ipc_object_stub.h"
#include "ipc_skeleton.h"
#include "ipc_types.h"
#include "iservice_registry.h"
#include "message_option.h"
#include "test_device_context.h"
#include "virtual_clock.h"

namespace Tarvo::Emu::Test {
namespace {
using namespace Tarvo::DisplayPowerMgr;
using Tarvo::Test::Hex;

// The interface tokens as the wire carries them.
const std::string kPowerMgrTokenHex =
    "26 00 00 00 74 00 61 00 72 00 76 00 6F 00 2E 00 64 00 69 00 73 00 70 00 6C 00 61 00 79 00 70 00 6F 00 77 00 "
    "65 00 72 00 6D 00 67 00 72 00 2E 00 49 00 44 00 69 00 73 00 70 00 6C 00 61 00 79 00 50 00 6F 00 77 00 65 00 "
    "72 00 4D 00 67 00 72 00 00 00 00 00";
const std::string kCallbackTokenHex =
    "29 00 00 00 74 00 61 00 72 00 76 00 6F 00 2E 00 70 00 6F 00 77 00 65 00 72 00 6D 00 67 00 72 00 2E 00 49 00 "
    "44 00 69 00 73 00 70 00 6C 00 61 00 79 00 42 00 72 00 69 00 67 00 68 00 74 00 6E 00 65 00 73 00 73 00 43 00 "
    "61 00 6C 00 6C 00 62 00 61 00 63 00 6B 00 00 00";

// A brightness callback that records what reaches it and from whom.
class RecordingCallback : public IPCObjectStub {
public:
    RecordingCallback() : IPCObjectStub(BRIGHTNESS_CALLBACK_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel&, MessageOption& option) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(std::to_string(code) + (option.GetFlags() == MessageOption::TF_ASYNC ? " async " : " sync ") +
                         "from " + std::to_string(IPCSkeleton::GetCallingPid()) + ": " + Hex(data));
        return ERR_NONE;
    }
    std::vector<std::string> Calls()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> calls_;
};

class DisplayPowerManagerServiceTest : public testing::Test {
protected:
    void SetUp() override { service_.Start(); }

    sptr<RecordingCallback> MakeCallback()
    {
        ScopedProcess scope(zel_);
        return new RecordingCallback();
    }
    // Sends a registration from the zel process: the given bytes, then the callback (if any).
    int Register(const std::string& hex, const sptr<IRemoteObject>& callback, MessageParcel* reply = nullptr)
    {
        ScopedProcess scope(zel_);
        sptr<IRemoteObject> powerMgr =
            SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager()->GetSystemAbility(
                DISPLAY_POWER_MANAGER_ID);
        MessageParcel data = Tarvo::Test::ParcelFromHex(hex);
        if (callback != nullptr) {
            data.WriteRemoteObject(callback);
        }
        MessageParcel ignored;
        MessageOption option(MessageOption::TF_SYNC);
        return powerMgr->SendRequest(REGISTER_BRIGHTNESS_CALLBACK, data, reply ? *reply : ignored, option);
    }
    std::string PowerMgrPid() { return std::to_string(device_.FindProcess("display_power_manager")->Pid()); }

    TestDeviceContext device_{TestDeviceContext::Clock::VIRTUAL};
    DisplayPowerManagerService service_{device_};
    std::shared_ptr<VirtualProcess> zel_ = device_.MakeClientProcess("zel_manager");
};

TEST_F(DisplayPowerManagerServiceTest, RegistrationIsReadFromItsExactBytesAndAnsweredWithZero)
{
    sptr<RecordingCallback> callback = MakeCallback();
    const std::string thresholds = " 03 00 00 00 64 00 00 00 C8 00 00 00 2C 01 00 00";  // {100, 200, 300}
    MessageParcel reply;
    EXPECT_EQ(Register(kPowerMgrTokenHex + thresholds, callback, &reply), ERR_NONE);
    EXPECT_EQ(Hex(reply), "00 00 00 00");
    EXPECT_EQ(service_.LastThresholds(), (std::vector<int32_t>{100, 200, 300}));
    EXPECT_TRUE(service_.HasCallback());

    // Refused, keeping the registration: a foreign token, no callback, a count beyond the bytes.
    EXPECT_EQ(Register(kCallbackTokenHex + thresholds, callback), ERR_INVALID_VALUE);
    EXPECT_EQ(Register(kPowerMgrTokenHex + " 01 00 00 00 05 00 00 00", nullptr), ERR_INVALID_VALUE);
    EXPECT_EQ(Register(kPowerMgrTokenHex + " 09 00 00 00 05 00 00 00", callback), ERR_INVALID_VALUE);
    EXPECT_EQ(service_.LastThresholds(), (std::vector<int32_t>{100, 200, 300}));
}

TEST_F(DisplayPowerManagerServiceTest, LightGoesOneWayToTheLatestCallbackWithTypeAndState)
{
    EXPECT_FALSE(service_.Light(1, true));
    sptr<RecordingCallback> first = MakeCallback();
    sptr<RecordingCallback> latest = MakeCallback();
    ASSERT_EQ(Register(kPowerMgrTokenHex + " 03 00 00 00 64 00 00 00 C8 00 00 00 2C 01 00 00", first), ERR_NONE);
    ASSERT_EQ(Register(kPowerMgrTokenHex + " 00 00 00 00", latest), ERR_NONE);
    EXPECT_TRUE(service_.LastThresholds().empty());

    EXPECT_TRUE(service_.Light(1, true));
    EXPECT_TRUE(service_.Light(0, false));
    EXPECT_TRUE(service_.Light(2, std::nullopt));  // a malformed callback: the state is missing
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_TRUE(first->Calls().empty());
    const std::string prefix = "0 async from " + PowerMgrPid() + ": " + kCallbackTokenHex;
    EXPECT_EQ(latest->Calls(), (std::vector<std::string>{
                                   prefix + " 01 00 00 00 01 00 00 00",
                                   prefix + " 00 00 00 00 00 00 00 00",
                                   prefix + " 02 00 00 00",
                               }));
}

}  // namespace
}  // namespace Tarvo::Emu::Test
