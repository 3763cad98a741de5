#include "data_share_helper.h"

#include <gtest/gtest.h>

#include <mutex>

#include "data_share_connection_stub.h"
#include "data_share_provider_stub.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace Tarvo::DataShare {
namespace {
using Test::MakeProcess;

constexpr const char* kTable = "datashare:///com.tarvo.settingsdata/entry/settingsdata/SETTINGSDATA?Proxy=true";
constexpr const char* kExtension = "datashare:///com.tarvo.settingsdata.DataAbility";

std::vector<uint8_t> Bytes(const Parcel& parcel)
{
    return std::vector<uint8_t>(parcel.GetData(), parcel.GetData() + parcel.GetDataSize());
}

// Answers every operation with fixed results and records what arrived.
class FakeConnection : public DataShareConnectionStub {
public:
    std::shared_ptr<DataShareResultSet> Query(const std::string& uri, const DataSharePredicates& predicates,
                                              const std::vector<std::string>& columns, int32_t& status) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        requests.push_back("query " + uri + " " + std::to_string(predicates.GetConditions().size()) + " " +
                           std::to_string(columns.size()));
        status = rows.has_value() ? E_OK : E_ERROR;
        return rows.has_value() ? std::make_shared<DataShareResultSet>(*rows) : nullptr;
    }
    int32_t Insert(const std::string& uri, const DataShareValuesBucket& value) override
    {
        return Record("insert " + uri + " " + value.Get("KEYWORD").value_or("-"));
    }
    int32_t Update(const std::string& uri, const DataSharePredicates&, const DataShareValuesBucket&) override
    {
        return Record("update " + uri);
    }
    int32_t NotifyChange(const std::string& uri) override { return Record("notify " + uri); }
    int32_t RegisterObserver(const std::string& uri, const sptr<IRemoteObject>&) override
    {
        return Record("register " + uri);
    }
    int32_t UnregisterObserver(const std::string& uri, const sptr<IRemoteObject>&) override
    {
        return Record("unregister " + uri);
    }
    int32_t Release() override { return Record("release"); }

    int32_t Record(const std::string& request)
    {
        std::lock_guard<std::mutex> lock(mutex);
        requests.push_back(request);
        return result;
    }

    std::mutex mutex;
    std::vector<std::string> requests;
    int32_t result = 5;
    std::optional<DataShareResultSet> rows;
};

class FakeProvider : public DataShareProviderStub {
public:
    sptr<IRemoteObject> Connect(const std::string& uri, const std::string& extUri,
                                const sptr<IRemoteObject>& callerToken) override
    {
        seen = uri + " " + extUri;
        token = callerToken;
        return accept ? sptr<IRemoteObject>(connection) : nullptr;
    }

    bool accept = true;
    sptr<FakeConnection> connection = new FakeConnection();
    std::string seen;
    sptr<IRemoteObject> token;
};

class DataShareHelperTest : public testing::Test {
protected:
    void SetUp() override
    {
        ScopedProcess scope(clientProcess_);
        token_ = new IPCObjectStub(u"test.Token");
    }

    sptr<FakeProvider> StartProvider()
    {
        return samgr_.AddAbility<FakeProvider>(DATA_SHARE_PROVIDER_SA_ID, providerProcess_);
    }

    std::shared_ptr<DataShareHelper> Connect()
    {
        ScopedProcess scope(clientProcess_);
        return DataShareHelper::Creator(token_, kTable, kExtension);
    }

    std::shared_ptr<VirtualProcess> providerProcess_ = MakeProcess(20, "provider");
    std::shared_ptr<VirtualProcess> clientProcess_ = MakeProcess(30, "client");
    sptr<IRemoteObject> token_;
    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(DataShareHelperTest, PredicatesBucketsAndResultSetsTravelInTheirDocumentedLayout)
{
    Parcel parcel;
    DataShareValuesBucket bucket;
    bucket.Put("K", "a");
    bucket.Put("K", "b");
    ASSERT_TRUE(DataSharePredicates().EqualTo("K", "v").Marshalling(parcel));
    ASSERT_TRUE(bucket.Marshalling(parcel));
    EXPECT_EQ(Bytes(parcel), (std::vector<uint8_t>{
                                 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0,   0, 'K', 0, 0, 0, 1, 0, 0,   0, 'v', 0,
                                 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 'K', 0, 0,   0, 1, 0, 0, 0, 'b', 0, 0,   0,
                             }));

    Parcel rows;
    ASSERT_TRUE(DataShareResultSet({"KEYWORD", "VALUE"}, {{"k1", "v1"}, {"k2"}}).Marshalling(rows));
    DataShareResultSet read;
    ASSERT_TRUE(DataShareResultSet::Unmarshalling(rows, read));
    int index = -1;
    std::string value;
    EXPECT_NE(read.GetString(0, value), DataShareResultSet::E_OK);  // before the first row
    EXPECT_EQ(read.GoToRow(1), DataShareResultSet::E_OK);
    EXPECT_EQ(read.GetColumnIndex("VALUE", index), DataShareResultSet::E_OK);
    EXPECT_EQ(read.GetString(index, value), DataShareResultSet::E_OK);
    EXPECT_EQ(value, "");  // the short row was padded
    EXPECT_NE(read.GoToNextRow(), DataShareResultSet::E_OK);
    read.Close();
    EXPECT_NE(read.GoToFirstRow(), DataShareResultSet::E_OK);

    // A count that the bytes cannot hold is refused before anything is read.
    Parcel huge;
    huge.WriteInt32(0x7fffffff);
    DataSharePredicates predicates;
    EXPECT_FALSE(DataSharePredicates::Unmarshalling(huge, predicates));
    EXPECT_FALSE(DataShareValuesBucket::Unmarshalling(huge, bucket));
    EXPECT_EQ(huge.GetReadPosition(), 0u);
}

TEST_F(DataShareHelperTest, CreatorConnectsWithTheUrisAndTokenOrGivesNull)
{
    EXPECT_EQ(Connect(), nullptr);  // no provider yet
    sptr<FakeProvider> provider = StartProvider();
    EXPECT_EQ(DataShareHelper::Creator(nullptr, kTable, kExtension), nullptr);
    provider->accept = false;
    EXPECT_EQ(Connect(), nullptr);
    provider->accept = true;
    EXPECT_NE(Connect(), nullptr);
    EXPECT_EQ(provider->seen, std::string(kTable) + " " + kExtension);
    ASSERT_NE(provider->token, nullptr);
    EXPECT_TRUE(provider->token->IsProxyObject());
    EXPECT_EQ(provider->token->GetObjectDescriptor(), u"test.Token");
}

TEST_F(DataShareHelperTest, OperationsAreRequestsOnTheConnectionUntilReleased)
{
    sptr<FakeProvider> provider = StartProvider();
    auto helper = Connect();
    ASSERT_NE(helper, nullptr);
    Uri uri(kTable);
    DataShareValuesBucket bucket;
    bucket.Put("KEYWORD", "k");
    std::vector<std::string> columns;
    DatashareBusinessError error;

    EXPECT_EQ(helper->Query(uri, DataSharePredicates().EqualTo("KEYWORD", "k"), columns, &error), nullptr);
    EXPECT_EQ(error.GetCode(), -1);
    provider->connection->rows = DataShareResultSet({"VALUE"}, {{"v"}});
    auto resultSet = helper->Query(uri, DataSharePredicates(), columns, &error);
    ASSERT_NE(resultSet, nullptr);
    std::string value;
    EXPECT_EQ(resultSet->GoToFirstRow(), 0);
    EXPECT_EQ(resultSet->GetString(0, value), 0);
    EXPECT_EQ(value, "v");
    EXPECT_EQ(error.GetCode(), 0);

    EXPECT_EQ(helper->Insert(uri, bucket), 5);
    EXPECT_EQ(helper->Update(uri, DataSharePredicates(), bucket), 5);
    helper->NotifyChange(uri);
    helper->RegisterObserver(uri, nullptr);  // ignored
    EXPECT_FALSE(helper->Release());         // the fake answers 5, not E_OK
    EXPECT_EQ(helper->Insert(uri, bucket), -1);
    EXPECT_EQ(provider->connection->requests,
              (std::vector<std::string>{"query " + uri.ToString() + " 1 0", "query " + uri.ToString() + " 0 0",
                                        "insert " + uri.ToString() + " k", "update " + uri.ToString(),
                                        "notify " + uri.ToString(), "release"}));

    // A connection whose provider died answers -1 and null.
    auto second = Connect();
    ASSERT_NE(second, nullptr);
    providerProcess_->Kill();
    EXPECT_EQ(second->Insert(uri, bucket), -1);
    EXPECT_EQ(second->Query(uri, DataSharePredicates(), columns, &error), nullptr);
    EXPECT_EQ(error.GetCode(), ERR_DEAD_OBJECT);
}

}  // namespace
}  // namespace Tarvo::DataShare
