#include "parameters.h"

#include <gtest/gtest.h>

#include <map>
#include <mutex>

#include "ipc_transport.h"
#include "ipc_types.h"
#include "message_option.h"
#include "parameter_service_stub.h"
#include "platform_test_support.h"
#include "work_tracker.h"

namespace Tarvo::system {
namespace {
using Test::Hex;
using Test::MakeProcess;

// A parameter store in memory that keeps the bytes of every request and reply.
class FakeParameterService : public ParameterServiceStub {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        MessageParcel request = data;
        int status = ParameterServiceStub::OnRemoteRequest(code, data, reply, option);
        std::lock_guard<std::mutex> lock(mutex_);
        if (request.ReadInterfaceToken() == GetDescriptor()) {
            wire_.push_back(Hex(request, request.GetReadPosition()) + " -> " + Hex(reply));
        }
        return status;
    }
    int32_t SetParameter(const std::string& key, const std::string& value) override
    {
        if (!IsValidParameter(key, value)) {
            return PARAMETER_REFUSED;
        }
        std::lock_guard<std::mutex> lock(mutex_);
        values_[key] = value;
        return 0;
    }
    std::optional<std::string> GetParameter(const std::string& key) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = values_.find(key);
        return it != values_.end() ? std::optional<std::string>(it->second) : std::nullopt;
    }
    std::vector<std::string> Wire()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return wire_;
    }

private:
    std::mutex mutex_;
    std::map<std::string, std::string> values_;
    std::vector<std::string> wire_;
};

class ParametersTest : public testing::Test {
protected:
    void SetUp() override
    {
        service_ = samgr_.AddAbility<FakeParameterService>(IParameterService::PARAMETER_SERVICE_ID, serviceProcess_);
    }

    std::shared_ptr<VirtualProcess> serviceProcess_ = MakeProcess(20, "param_service");
    std::shared_ptr<VirtualProcess> clientProcess_ = MakeProcess(30, "client");
    sptr<FakeParameterService> service_;
    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(ParametersTest, SetAndGetTravelToTheServiceOfAnotherProcess)
{
    ScopedProcess scope(clientProcess_);
    EXPECT_TRUE(SetParameter("a.b", "1"));
    EXPECT_EQ(GetParameter("a.b", "def"), "1");
    EXPECT_EQ(GetParameter("a.c", "def"), "def");
    EXPECT_EQ(service_->Wire(), (std::vector<std::string>{
                                    "03 00 00 00 61 2E 62 00 01 00 00 00 31 00 00 00 -> 00 00 00 00",  // set
                                    "03 00 00 00 61 2E 62 00 -> 01 00 00 00 01 00 00 00 31 00 00 00",  // found
                                    "03 00 00 00 61 2E 63 00 -> 00 00 00 00",                          // not set
                                }));
    // Refused by the service: an empty key, a key with '=', a value with a line break.
    EXPECT_FALSE(SetParameter("", "1"));
    EXPECT_FALSE(SetParameter("a=b", "1"));
    EXPECT_FALSE(SetParameter("a.b", "1\n2"));
    EXPECT_EQ(GetParameter("a.b", "def"), "1");
}

TEST_F(ParametersTest, UnreachableServiceGivesFalseAndTheDefault)
{
    ScopedProcess scope(clientProcess_);
    samgr_.Uninstall();
    EXPECT_FALSE(SetParameter("a.b", "1"));
    samgr_.Install();
    samgr_->RemoveSystemAbility(IParameterService::PARAMETER_SERVICE_ID);
    EXPECT_FALSE(SetParameter("a.b", "1"));
    EXPECT_EQ(GetParameter("a.b", "def"), "def");
    samgr_->AddSystemAbility(IParameterService::PARAMETER_SERVICE_ID, service_);
    IPCTransport::Get().SetTransportFault(serviceProcess_->Pid(), true);
    EXPECT_FALSE(SetParameter("a.b", "1"));
    EXPECT_EQ(GetParameter("a.b", "def"), "def");
    IPCTransport::Get().SetTransportFault(serviceProcess_->Pid(), false);
    EXPECT_TRUE(service_->Wire().empty());
}

TEST_F(ParametersTest, TheServiceFoundIsKeptUntilTheServiceManagerWithdrawsIt)
{
    auto quiet = [] { ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10))); };
    ScopedProcess scope(clientProcess_);
    EXPECT_TRUE(SetParameter("a.b", "1"));
    // Kept while the service manager is away.
    samgr_.Uninstall();
    EXPECT_EQ(GetParameter("a.b", "def"), "1");
    samgr_.Install();
    samgr_->RemoveSystemAbility(IParameterService::PARAMETER_SERVICE_ID);
    quiet();
    EXPECT_EQ(GetParameter("a.b", "def"), "def");
    samgr_->AddSystemAbility(IParameterService::PARAMETER_SERVICE_ID, service_);
    quiet();
    EXPECT_EQ(GetParameter("a.b", "def"), "1");
    // Another object under the id replaces the one kept.
    samgr_.AddAbility<FakeParameterService>(IParameterService::PARAMETER_SERVICE_ID, serviceProcess_);
    quiet();
    EXPECT_EQ(GetParameter("a.b", "def"), "def");
}

TEST_F(ParametersTest, StubRefusesForeignTokensAndTruncatedRequests)
{
    auto send = [this](uint32_t code, MessageParcel& data) {
        MessageParcel reply;
        MessageOption option;
        return service_->OnRemoteRequest(code, data, reply, option);
    };
    MessageParcel foreign;
    foreign.WriteInterfaceToken(u"tarvo.startup.Other");
    foreign.WriteString("a.b");
    foreign.WriteString("1");
    EXPECT_EQ(send(IParameterService::SET_PARAMETER, foreign), ERR_INVALID_VALUE);
    MessageParcel cut;
    cut.WriteInterfaceToken(IParameterService::GetDescriptor());
    cut.WriteString("a.b");
    EXPECT_EQ(send(IParameterService::SET_PARAMETER, cut), ERR_INVALID_VALUE);
    EXPECT_EQ(service_->GetParameter("a.b"), std::nullopt);
}

}  // namespace
}  // namespace Tarvo::system
