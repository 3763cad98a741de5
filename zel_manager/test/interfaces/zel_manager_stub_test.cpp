// The manager's stub as callers of every kind reach it across processes.
#include <gtest/gtest.h>

#include "hilog.h"
#include "ipc_types.h"
#include "zel_manager_test_doubles.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LogCapture;
using testing::_;
using Fields = std::function<void(MessageParcel&)>;

class ZelManagerStubTest : public testing::Test {
protected:
    void SetUp() override
    {
        ScopedProcess scope(serviceProcess_);
        stub_ = new testing::NiceMock<MockZelManager>();
    }

    // A request from a process of that kind, carried by the driver to the service's process.
    int Send(CallerKind kind, uint32_t code, const Fields& fields, MessageParcel& reply,
             const std::u16string& token = u"Tarvo.IZelManager")
    {
        ScopedProcess scope(MakeCaller(kind, 300 + static_cast<int32_t>(kind)));
        MessageParcel data;
        data.WriteInterfaceToken(token);
        fields(data);
        MessageOption option(MessageOption::TF_SYNC);
        return sptr<IRemoteObject>(stub_)->SendRequest(code, data, reply, option);
    }

    std::shared_ptr<VirtualProcess> serviceProcess_ = MakeCaller(CallerKind::NATIVE, 200);
    sptr<testing::NiceMock<MockZelManager>> stub_;
    LogCapture log_;
};

// Native processes and the shell may not register; the other cells of the caller matrix are
// played in examples/scenarios/request_callers.scn and scene_callers.scn.
TEST_F(ZelManagerStubTest, NativeProcessesAndTheShellMayNotRegister)
{
    for (CallerKind kind : {CallerKind::NATIVE, CallerKind::SHELL}) {
        log_.Clear();
        MessageParcel reply;
        auto callback = [](MessageParcel& p) {
            ScopedProcess scope(MakeCaller(CallerKind::ORDINARY_APP, 400));
            p.WriteRemoteObject(sptr<IRemoteObject>(new TestCallback()));
        };
        EXPECT_EQ(Send(kind, 3, callback, reply), 3);
        EXPECT_EQ(reply.GetDataSize(), 0u);
        EXPECT_EQ(log_.Lines(), std::vector<std::string>{
                                    "E [ZelManagerStub::RegisterGameFpsListenerStub] permission verification failed."});
    }
}

// Nothing reaches the service: refused (3), parcel faults (-1, with the handler's text) or the
// platform's answer to an unknown code. Counts are checked before anything is allocated.
TEST_F(ZelManagerStubTest, MalformedRequestsNeverReachTheService)
{
    struct Case {
        uint32_t code;
        Fields fields;
        int status;
        std::string error;
        std::string reply = "";
        CallerKind caller = CallerKind::NATIVE;
        std::u16string token = u"Tarvo.IZelManager";
    };
    const std::string refused = "[ZelManagerStub::OnRemoteRequest] descriptor is not matched!";
    auto none = [](MessageParcel&) {};
    const Case cases[] = {
        {0, none, 3, refused, "", CallerKind::NATIVE, u"Tarvo.IZelManagerX"},
        {2, none, 3, refused, "", CallerKind::NATIVE, u"Tarvo.IZelManagerX"},
        {99, none, 3, refused, "", CallerKind::NATIVE, u"Tarvo.IZelManagerX"},
        {0, none, -1, "[ZelManagerStub::SetSceneStub] read pkgName failed"},
        {0, [](MessageParcel& p) { p.WriteString("a"); }, -1, "[ZelManagerStub::SetSceneStub] read sceneName failed"},
        {0, [](MessageParcel& p) { p.WriteString("a"), p.WriteString("b"); }, -1,
         "[ZelManagerStub::SetSceneStub] read state failed"},
        {1, none, -1, "[ZelManagerStub::ChangeResolutionModeStub] read mode failed"},
        {1, [](MessageParcel& p) { p.WriteInt32(1); }, -1,
         "[ZelManagerStub::ChangeResolutionModeStub] read flag failed"},
        {2, none, -1, "[ZelManagerStub::SetThermalPolicyStub] read keys failed"},
        {2, [](MessageParcel& p) { p.WriteInt32(0x3FFFFFFF), p.WriteUint32(101); }, -1,
         "[ZelManagerStub::SetThermalPolicyStub] read keys failed"},
        {2, [](MessageParcel& p) { p.WriteInt32(-1); }, -1, "[ZelManagerStub::SetThermalPolicyStub] read keys failed"},
        {2, [](MessageParcel& p) { p.WriteUInt32Vector({101}); }, -1,
         "[ZelManagerStub::SetThermalPolicyStub] read values failed"},
        {2, [](MessageParcel& p) { p.WriteUInt32Vector({101}), p.WriteInt32(1); }, -1,
         "[ZelManagerStub::SetThermalPolicyStub] read values failed"},
        // Empty or unequal vectors: all bits set in the reply, and no log.
        {2, [](MessageParcel& p) { p.WriteUInt32Vector({}), p.WriteUInt32Vector({}); }, -1, "", "FF FF FF FF"},
        {2,
         [](MessageParcel& p) {
             p.WriteUInt32Vector({1, 2}), p.WriteUInt32Vector({1, 2, 3});
         },
         -1, "", "FF FF FF FF"},
        {3, none, -1, "[ZelManagerStub::RegisterGameFpsListenerStub] read callback failed.", "",
         CallerKind::ORDINARY_APP},
        {3, [](MessageParcel& p) { p.WriteString("not an object"); }, -1,
         "[ZelManagerStub::RegisterGameFpsListenerStub] read callback failed.", "", CallerKind::ORDINARY_APP},
        {4, none, -1, "[ZelManagerStub::RegisterGameFpsListenerStub] read pkgName failed"},
        {4, [](MessageParcel& p) { p.WriteString("com.game"); }, -1,
         "[ZelManagerStub::RegisterGameFpsListenerStub] read fps failed"},
        {5, none, IPC_STUB_UNKNOW_TRANS_ERR, "", "", CallerKind::ORDINARY_APP},
        {1000, none, IPC_STUB_UNKNOW_TRANS_ERR, "", "", CallerKind::ORDINARY_APP},
    };
    EXPECT_CALL(*stub_, SetScene(_, _, _)).Times(0);
    EXPECT_CALL(*stub_, ChangeResolutionMode(_, _)).Times(0);
    EXPECT_CALL(*stub_, SetThermalPolicy(_)).Times(0);
    EXPECT_CALL(*stub_, RegisterGameFpsListener(_)).Times(0);
    EXPECT_CALL(*stub_, SetGameFpsForThermalControl(_, _)).Times(0);
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.code) + " " + c.error);
        log_.Clear();
        MessageParcel reply;
        EXPECT_EQ(Send(c.caller, c.code, c.fields, reply, c.token), c.status);
        EXPECT_EQ(log_.Lines(),
                  c.error.empty() ? std::vector<std::string>{} : std::vector<std::string>{"E " + c.error});
        EXPECT_EQ(Hex(reply), c.reply);
    }
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
