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
using testing::NiceMock;
using testing::Return;

constexpr CallerKind kAllKinds[] = {CallerKind::SYSTEM_APP, CallerKind::NATIVE, CallerKind::SHELL,
                                    CallerKind::ORDINARY_APP};

class ZelManagerStubTest : public testing::Test {
protected:
    void SetUp() override
    {
        ScopedProcess scope(serviceProcess_);
        stub_ = new NiceMock<MockZelManager>();
    }

    // A request from a process of that kind, carried by the driver to the service's process.
    int Send(CallerKind kind, uint32_t code, MessageParcel& data, MessageParcel& reply)
    {
        ScopedProcess scope(MakeCaller(kind, 300 + static_cast<int32_t>(kind)));
        MessageOption option(MessageOption::TF_SYNC);
        return sptr<IRemoteObject>(stub_)->SendRequest(code, data, reply, option);
    }

    // A well-formed request of each code.
    MessageParcel ValidRequest(uint32_t code)
    {
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManager");
        switch (code) {
            case 0:
                data.WriteString("com.a");
                data.WriteString("S");
                data.WriteUint32(1);
                break;
            case 1:
                data.WriteInt32(1);
                data.WriteInt32(0);
                break;
            case 2:
                data.WriteUInt32Vector({101});
                data.WriteUInt32Vector({90});
                break;
            case 3: {
                ScopedProcess scope(MakeCaller(CallerKind::ORDINARY_APP, 400));
                data.WriteRemoteObject(sptr<IRemoteObject>(new TestCallback()));
                break;
            }
            default:
                data.WriteString("com.game");
                data.WriteUint32(30);
                break;
        }
        return data;
    }

    std::shared_ptr<VirtualProcess> serviceProcess_ = MakeCaller(CallerKind::NATIVE, 200);
    sptr<NiceMock<MockZelManager>> stub_;
    LogCapture log_;
};

TEST_F(ZelManagerStubTest, WrongTokenIsRefusedBeforeTheCodeIsLookedAt)
{
    for (uint32_t code : {0u, 2u, 99u}) {
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManagerX");
        MessageParcel reply;
        EXPECT_EQ(Send(CallerKind::NATIVE, code, data, reply), 3);
        EXPECT_EQ(reply.GetDataSize(), 0u);
    }
    EXPECT_EQ(log_.Count(LOG_ERROR, "[ZelManagerStub::OnRemoteRequest] descriptor is not matched!"), 3u);
}

TEST_F(ZelManagerStubTest, CallerMatrixAdmitsSystemCallersAndOnlyOrdinaryAppsToRegister)
{
    const char* handlers[] = {"SetSceneStub", "ChangeResolutionModeStub", "SetThermalPolicyStub",
                              "RegisterGameFpsListenerStub", "SetGameFpsForThermalControlStub"};
    for (uint32_t code = 0; code < 5; ++code) {
        for (CallerKind kind : kAllKinds) {
            bool ordinary = kind == CallerKind::ORDINARY_APP;
            bool admitted = code == 3 ? ordinary : !ordinary;
            log_.Clear();
            MessageParcel data = ValidRequest(code);
            MessageParcel reply;
            int status = Send(kind, code, data, reply);
            std::string refusal =
                std::string("[ZelManagerStub::") + handlers[code] + "] permission verification failed.";
            SCOPED_TRACE(KindName(kind) + " code " + std::to_string(code));
            EXPECT_EQ(log_.Contains(LOG_ERROR, refusal), !admitted);
            if (!admitted) {
                EXPECT_EQ(status, 3);
                EXPECT_EQ(reply.GetDataSize(), 0u);
            } else {
                EXPECT_NE(status, 3);
            }
        }
    }
}

TEST_F(ZelManagerStubTest, AdmittedRequestsReachTheServiceWithTheirArguments)
{
    EXPECT_CALL(*stub_, SetScene("com.a", "S", 1u));
    EXPECT_CALL(*stub_, ChangeResolutionMode(1, 0)).WillOnce(Return(0));
    EXPECT_CALL(*stub_, SetGameFpsForThermalControl("com.game", 30u)).WillOnce(Return(0));
    for (uint32_t code : {0u, 1u, 4u}) {
        MessageParcel data = ValidRequest(code);
        MessageParcel reply;
        EXPECT_EQ(Send(CallerKind::SHELL, code, data, reply), 0);
    }
}

TEST_F(ZelManagerStubTest, ThermalPolicyVectorsBecomeAMapWhereTheLaterEqualKeyWins)
{
    std::map<uint32_t, uint32_t> expected = {{101, 4}};
    EXPECT_CALL(*stub_, SetThermalPolicy(expected)).WillOnce(Return(1));
    MessageParcel data;
    data.WriteInterfaceToken(u"Tarvo.IZelManager");
    data.WriteUInt32Vector({101, 101});
    data.WriteUInt32Vector({2, 4});
    MessageParcel reply;
    EXPECT_EQ(Send(CallerKind::NATIVE, 2, data, reply), 0);
    EXPECT_EQ(reply.ReadUint32(), 1u);
}

TEST_F(ZelManagerStubTest, EmptyOrUnequalThermalVectorsAnswerAllBitsSetWithoutALog)
{
    EXPECT_CALL(*stub_, SetThermalPolicy(_)).Times(0);
    std::vector<std::pair<std::vector<uint32_t>, std::vector<uint32_t>>> cases = {{{}, {}}, {{1, 2}, {1, 2, 3}}};
    for (const auto& [keys, values] : cases) {
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManager");
        data.WriteUInt32Vector(keys);
        data.WriteUInt32Vector(values);
        MessageParcel reply;
        EXPECT_EQ(Send(CallerKind::NATIVE, 2, data, reply), -1);
        EXPECT_EQ(reply.ReadUint32(), 0xFFFFFFFFu);
    }
    EXPECT_TRUE(log_.Records().empty());
}

TEST_F(ZelManagerStubTest, ParcelFaultsGiveMinusOneWithTheHandlersTexts)
{
    struct Case {
        uint32_t code;
        CallerKind caller;
        std::function<void(MessageParcel&)> fields;  // what precedes the missing field
        std::string message;
    };
    std::vector<Case> cases = {
        {0, CallerKind::NATIVE, [](MessageParcel&) {}, "[ZelManagerStub::SetSceneStub] read pkgName failed"},
        {0, CallerKind::NATIVE, [](MessageParcel& p) { p.WriteString("a"); },
         "[ZelManagerStub::SetSceneStub] read sceneName failed"},
        {0, CallerKind::NATIVE,
         [](MessageParcel& p) {
             p.WriteString("a");
             p.WriteString("b");
         },
         "[ZelManagerStub::SetSceneStub] read state failed"},
        {1, CallerKind::NATIVE, [](MessageParcel&) {}, "[ZelManagerStub::ChangeResolutionModeStub] read mode failed"},
        {1, CallerKind::NATIVE, [](MessageParcel& p) { p.WriteInt32(1); },
         "[ZelManagerStub::ChangeResolutionModeStub] read flag failed"},
        {2, CallerKind::NATIVE, [](MessageParcel&) {}, "[ZelManagerStub::SetThermalPolicyStub] read keys failed"},
        {2, CallerKind::NATIVE, [](MessageParcel& p) { p.WriteUInt32Vector({101}); },
         "[ZelManagerStub::SetThermalPolicyStub] read values failed"},
        {3, CallerKind::ORDINARY_APP, [](MessageParcel&) {},
         "[ZelManagerStub::RegisterGameFpsListenerStub] read callback failed."},
        {3, CallerKind::ORDINARY_APP, [](MessageParcel& p) { p.WriteString("not an object"); },
         "[ZelManagerStub::RegisterGameFpsListenerStub] read callback failed."},
        {4, CallerKind::NATIVE, [](MessageParcel&) {},
         "[ZelManagerStub::RegisterGameFpsListenerStub] read pkgName failed"},
        {4, CallerKind::NATIVE, [](MessageParcel& p) { p.WriteString("com.game"); },
         "[ZelManagerStub::RegisterGameFpsListenerStub] read fps failed"},
    };
    EXPECT_CALL(*stub_, SetScene(_, _, _)).Times(0);
    EXPECT_CALL(*stub_, ChangeResolutionMode(_, _)).Times(0);
    EXPECT_CALL(*stub_, SetThermalPolicy(_)).Times(0);
    EXPECT_CALL(*stub_, RegisterGameFpsListener(_)).Times(0);
    EXPECT_CALL(*stub_, SetGameFpsForThermalControl(_, _)).Times(0);
    for (const Case& c : cases) {
        log_.Clear();
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManager");
        c.fields(data);
        MessageParcel reply;
        EXPECT_EQ(Send(c.caller, c.code, data, reply), -1) << c.message;
        EXPECT_EQ(log_.Messages(LOG_ERROR), std::vector<std::string>{c.message});
        EXPECT_EQ(reply.GetDataSize(), 0u);
    }
}

TEST_F(ZelManagerStubTest, UnknownCodesGoToThePlatformsDefaultHandler)
{
    for (uint32_t code : {5u, 1000u}) {
        MessageParcel data;
        data.WriteInterfaceToken(u"Tarvo.IZelManager");
        MessageParcel reply;
        EXPECT_EQ(Send(CallerKind::ORDINARY_APP, code, data, reply), IPC_STUB_UNKNOW_TRANS_ERR);
    }
    EXPECT_TRUE(log_.Records().empty());
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
