#include "iremote_broker.h"

#include <gtest/gtest.h>

#include "ipc_test_support.h"
#include "ipc_types.h"
#include "iremote_proxy.h"
#include "iremote_stub.h"

namespace Tarvo {
namespace {
using namespace IpcTest;

class IEcho : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.test.IEcho");
    enum { ECHO = 1 };
    virtual int32_t Echo(int32_t value) = 0;
};

class IUnregistered : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.test.IUnregistered");
};

class EchoStub : public IRemoteStub<IEcho> {
public:
    int32_t Echo(int32_t value) override { return value + 1; }
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        if (code != ECHO) {
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
        if (data.ReadInterfaceToken() != GetDescriptor()) {
            return ERR_INVALID_VALUE;
        }
        return reply.WriteInt32(Echo(data.ReadInt32())) ? ERR_NONE : ERR_INVALID_VALUE;
    }
};

class EchoProxy : public IRemoteProxy<IEcho> {
public:
    explicit EchoProxy(const sptr<IRemoteObject>& object) : IRemoteProxy<IEcho>(object) {}
    int32_t Echo(int32_t value) override
    {
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(value)) {
            return -1;
        }
        return Remote()->SendRequest(ECHO, data, reply, option) == ERR_NONE ? reply.ReadInt32() : -1;
    }
};

BrokerDelegator<EchoProxy> g_echoDelegator;

class BrokerRegistrationTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(WorkTracker::GetInstance().WaitQuiet(kTimeout)); }

    sptr<EchoStub> MakeEchoStub()
    {
        ScopedProcess scope(service_);
        return new EchoStub();
    }

    std::shared_ptr<VirtualProcess> service_ = MakeProcess(600, "service");
    std::shared_ptr<VirtualProcess> client_ = MakeProcess(601, "client");
};

TEST_F(BrokerRegistrationTest, ProxyObjectBecomesTheRegisteredProxyClass)
{
    sptr<IRemoteObject> remote = Transfer(MakeEchoStub(), client_);
    ScopedProcess scope(client_);
    sptr<IEcho> echo = iface_cast<IEcho>(remote);
    ASSERT_NE(echo, nullptr);
    EXPECT_NE(dynamic_cast<EchoProxy*>(echo.GetRefPtr()), nullptr);
    EXPECT_EQ(echo->AsObject(), remote);
    EXPECT_EQ(echo->Echo(5), 6);

    EXPECT_EQ(iface_cast<IUnregistered>(remote), nullptr);
    EXPECT_EQ(iface_cast<IEcho>(nullptr), nullptr);
}

TEST_F(BrokerRegistrationTest, LocalObjectIsItsOwnInterface)
{
    sptr<EchoStub> stub = MakeEchoStub();
    sptr<IEcho> echo = iface_cast<IEcho>(sptr<IRemoteObject>(stub));
    EXPECT_EQ(echo.GetRefPtr(), static_cast<IEcho*>(stub.GetRefPtr()));
    EXPECT_EQ(echo->AsObject(), sptr<IRemoteObject>(stub));
    EXPECT_EQ(iface_cast<IUnregistered>(sptr<IRemoteObject>(stub)), nullptr);
}

TEST_F(BrokerRegistrationTest, OnlyTheRegisteringOwnerRemovesACreator)
{
    auto& registration = BrokerRegistration::Get();
    int other = 0;
    auto creator = [](const sptr<IRemoteObject>& object) -> sptr<IRemoteBroker> { return new EchoProxy(object); };
    EXPECT_FALSE(registration.Register(IEcho::GetDescriptor(), creator, &other));
    registration.Unregister(IEcho::GetDescriptor(), &other);

    sptr<IRemoteObject> remote = Transfer(MakeEchoStub(), client_);
    EXPECT_NE(registration.NewInstance(IEcho::GetDescriptor(), remote), nullptr);

    EXPECT_TRUE(registration.Register(u"tarvo.test.ITemporary", creator, &other));
    EXPECT_NE(registration.NewInstance(u"tarvo.test.ITemporary", remote), nullptr);
    registration.Unregister(u"tarvo.test.ITemporary", &other);
    EXPECT_EQ(registration.NewInstance(u"tarvo.test.ITemporary", remote), nullptr);
}

}  // namespace
}  // namespace Tarvo
