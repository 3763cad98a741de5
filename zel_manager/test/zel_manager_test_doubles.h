#ifndef ZEL_MANAGER_TEST_ZEL_MANAGER_TEST_DOUBLES_H
#define ZEL_MANAGER_TEST_ZEL_MANAGER_TEST_DOUBLES_H

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ipc_object_stub.h"
#include "iremote_stub.h"
#include "message_parcel.h"
#include "platform_test_support.h"
#include "zel_manager_stub.h"

namespace Tarvo::Vantel::Test {

// The manager's stub with the service operations mocked: what the stub decoded.
class MockZelManager : public ZelManagerStub {
public:
    MOCK_METHOD(void, SetScene, (const std::string&, const std::string&, uint32_t), (override));
    MOCK_METHOD(int32_t, ChangeResolutionMode, (int32_t, int32_t), (override));
    MOCK_METHOD(uint32_t, SetThermalPolicy, ((std::map<uint32_t, uint32_t>)), (override));
    MOCK_METHOD(uint32_t, RegisterGameFpsListener, (sptr<IZelCallbackInterface>&), (override));
    MOCK_METHOD(uint32_t, SetGameFpsForThermalControl, (const std::string&, uint32_t), (override));
};

// Stands where the service would: records every request as bytes and answers with a canned reply.
class RecordingRemote : public IPCObjectStub {
public:
    struct Request {
        uint32_t code;
        int flags;
        int waitTime;
        MessageParcel data;
    };
    RecordingRemote() : IPCObjectStub(u"Tarvo.IZelManager") {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        requests.push_back({code, option.GetFlags(), option.GetWaitTime(), data});
        if (writeReply) {
            reply.WriteUint32(replyValue);
        }
        return status;
    }
    std::vector<Request> requests;
    bool writeReply = true;
    uint32_t replyValue = 0;
    int status = 0;
};

class TestCallback : public IRemoteStub<IZelCallbackInterface> {
public:
    int32_t OnGameFpsChange(uint32_t) override { return 0; }
};

using Tarvo::Test::Hex;

// The interface token "Tarvo.IZelManager": length 17, UTF-16LE, a 0 unit, no padding needed.
inline const std::string kManagerTokenHex =
    "11 00 00 00 54 00 61 00 72 00 76 00 6F 00 2E 00 49 00 5A 00 65 00 6C 00 4D 00 61 00 6E 00 61 00 67 00 65 00 "
    "72 00 00 00";

}  // namespace Tarvo::Vantel::Test

#endif  // ZEL_MANAGER_TEST_ZEL_MANAGER_TEST_DOUBLES_H
