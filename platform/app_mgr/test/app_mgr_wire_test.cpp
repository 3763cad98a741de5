// The application manager's and its observers' wire formats, byte for byte, both ways.
#include <gtest/gtest.h>

#include <memory>

#include "app_mgr_proxy.h"
#include "app_mgr_stub.h"
#include "application_state_observer_proxy.h"
#include "application_state_observer_stub.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace Tarvo::AppExecFwk {
namespace {

// The bytes from the read position on.
std::string Hex(const Parcel& parcel)
{
    return Test::Hex(parcel, parcel.GetReadPosition());
}

std::string Text(const AppStateData& d)
{
    return d.bundleName + "/" + std::to_string(d.pid) + "/" + std::to_string(d.state) + "/" +
           std::to_string(d.isFocused) + "/" + std::to_string(d.uid);
}

// Records every request (its token already read) and answers with int32 7.
class RecordingRemote : public IPCObjectStub {
public:
    RecordingRemote() : IPCObjectStub(u"recording") {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        requests.push_back({code, option.GetFlags(), data});
        reply.WriteInt32(7);
        return 0;
    }
    struct Request {
        uint32_t code;
        int flags;
        MessageParcel data;
    };
    std::vector<Request> requests;
};

class RecordingObserver : public ApplicationStateObserverStub {
public:
    void OnForegroundApplicationChanged(const AppStateData& data) override { seen.push_back("fg " + Text(data)); }
    void OnProcessDied(const AppStateData& data) override { seen.push_back("died " + Text(data)); }
    std::vector<std::string> seen;
};

class RecordingAppMgr : public AppMgrStub {
public:
    int32_t RegisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer,
                                             const std::vector<std::string>& bundleNameList) override
    {
        registered = observer;
        filter = bundleNameList;
        return 5;
    }
    int32_t UnregisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer) override
    {
        return observer == registered ? 0 : 1;
    }
    sptr<IApplicationStateObserver> registered;
    std::vector<std::string> filter;
};

class AppMgrWireTest : public testing::Test {
protected:
    // Request `index` handed to `stub` as the driver would; the status and the reply's bytes.
    std::pair<int, std::string> Replay(IPCObjectStub& stub, size_t index)
    {
        MessageParcel data = remote_->requests.at(index).data;
        MessageParcel reply;
        MessageOption option;
        int status = stub.OnRemoteRequest(remote_->requests.at(index).code, data, reply, option);
        return {status, Hex(reply)};
    }
    std::string Body(size_t index)
    {
        MessageParcel data = remote_->requests.at(index).data;
        data.ReadInterfaceToken();
        return Hex(data);
    }

    sptr<RecordingRemote> remote_ = new RecordingRemote();
};

TEST_F(AppMgrWireTest, AppStateDataTravelsAsStringPidStateFocusUid)
{
    AppStateData data;
    data.bundleName = "com.a";
    data.pid = 300;
    data.state = static_cast<int32_t>(ApplicationState::APP_STATE_BACKGROUND);
    data.isFocused = true;
    data.uid = 20010000;
    Parcel parcel;
    ASSERT_TRUE(data.Marshalling(parcel));
    EXPECT_EQ(Hex(parcel), "05 00 00 00 63 6F 6D 2E 61 00 00 00 2C 01 00 00 04 00 00 00 01 00 00 00 10 54 31 01");
    std::unique_ptr<AppStateData> back(AppStateData::Unmarshalling(parcel));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(Text(*back), "com.a/300/4/1/20010000");

    // A missing field fails the whole read and leaves the parcel where it was.
    Parcel truncated(parcel.GetData(), parcel.GetDataSize() - 4);
    EXPECT_EQ(AppStateData::Unmarshalling(truncated), nullptr);
    EXPECT_EQ(truncated.GetReadPosition(), 0u);
}

TEST_F(AppMgrWireTest, ObserverCallsAreOneWayAndMalformedOnesAreRefused)
{
    sptr<ApplicationStateObserverProxy> proxy = new ApplicationStateObserverProxy(remote_);
    AppStateData data;
    data.bundleName = "com.a";
    data.pid = 5;
    data.state = 2;
    proxy->OnForegroundApplicationChanged(data);
    proxy->OnProcessDied(data);
    proxy->OnProcessCreated(data);
    ASSERT_EQ(remote_->requests.size(), 3u);
    EXPECT_EQ(remote_->requests[1].code, 2u);
    EXPECT_EQ(remote_->requests[2].code, 1u);
    EXPECT_EQ(remote_->requests[0].flags, MessageOption::TF_ASYNC);
    EXPECT_EQ(Body(0),
              "01 00 00 00 05 00 00 00 63 6F 6D 2E 61 00 00 00 05 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00");

    sptr<RecordingObserver> observer = new RecordingObserver();
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(Replay(*observer, i), std::make_pair(0, std::string()));
    }
    EXPECT_EQ(observer->seen, (std::vector<std::string>{"fg com.a/5/2/0/0", "died com.a/5/2/0/0"}));

    // A foreign token; a truncated state.
    remote_->requests[1].data.RewindWrite(remote_->requests[1].data.GetDataSize() - 8);
    MessageParcel foreign;
    foreign.WriteInterfaceToken(u"other");
    remote_->requests.push_back({0, 0, foreign});
    EXPECT_EQ(Replay(*observer, 1).first, ERR_INVALID_VALUE);
    EXPECT_EQ(Replay(*observer, 3).first, ERR_INVALID_VALUE);
    EXPECT_EQ(observer->seen.size(), 2u);
}

TEST_F(AppMgrWireTest, RegistrationCarriesTheObserverByReferenceAndTheFilter)
{
    sptr<AppMgrProxy> proxy = new AppMgrProxy(remote_);
    sptr<RecordingObserver> observer = new RecordingObserver();
    EXPECT_EQ(proxy->RegisterApplicationStateObserver(observer, {"com.a"}), 7);
    EXPECT_EQ(proxy->UnregisterApplicationStateObserver(observer), 7);
    EXPECT_EQ(proxy->RegisterApplicationStateObserver(nullptr), ERR_INVALID_VALUE);
    ASSERT_EQ(remote_->requests.size(), 2u);
    EXPECT_EQ(remote_->requests[0].flags, MessageOption::TF_SYNC);
    // Object marker, table index 0, then the filter.
    EXPECT_EQ(remote_->requests[0].code, 1u);
    EXPECT_EQ(Body(0), "21 4A 42 4F 00 00 00 00 01 00 00 00 05 00 00 00 63 6F 6D 2E 61 00 00 00");
    EXPECT_EQ(remote_->requests[1].code, 2u);
    EXPECT_EQ(Body(1), "21 4A 42 4F 00 00 00 00");

    sptr<RecordingAppMgr> manager = new RecordingAppMgr();
    EXPECT_EQ(Replay(*manager, 0), std::make_pair(0, std::string("05 00 00 00")));
    EXPECT_EQ(manager->registered, sptr<IApplicationStateObserver>(observer));
    EXPECT_EQ(manager->filter, std::vector<std::string>{"com.a"});
    EXPECT_EQ(Replay(*manager, 1), std::make_pair(0, std::string("00 00 00 00")));

    // No observer: refused without a reply.
    MessageParcel noObserver;
    noObserver.WriteInterfaceToken(IAppMgr::GetDescriptor());
    remote_->requests.push_back({1, 0, noObserver});
    EXPECT_EQ(Replay(*manager, 2), std::make_pair(int(ERR_INVALID_VALUE), std::string()));
}

}  // namespace
}  // namespace Tarvo::AppExecFwk
