#include "settings_provider.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <optional>

#include "data_ability_observer_stub.h"
#include "data_share_helper.h"
#include "ipc_object_stub.h"
#include "test_device_context.h"

namespace Tarvo::Emu {
namespace {

using DataShare::DataShareHelper;
using DataShare::DataSharePredicates;
using DataShare::DataShareValuesBucket;
using Test::TestDeviceContext;

constexpr auto kQuiet = std::chrono::seconds(10);
constexpr const char* kMode = "settings.display.resolution_mode";

class CountingObserver : public AAFwk::DataAbilityObserverStub {
public:
    void OnChange() override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        processes_.push_back(VirtualProcess::Current());
    }
    std::vector<std::shared_ptr<VirtualProcess>> Calls()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return processes_;
    }

private:
    std::mutex mutex_;
    std::vector<std::shared_ptr<VirtualProcess>> processes_;
};

class SettingsProviderTest : public testing::Test {
protected:
    std::shared_ptr<DataShareHelper> Connect()
    {
        ScopedProcess scope(client_);
        return DataShareHelper::Creator(token_, SettingsProvider::TABLE_URI, SettingsProvider::EXTENSION_URI);
    }

    static int Insert(DataShareHelper& helper, const std::string& key, const std::string& value)
    {
        Uri uri(SettingsProvider::TABLE_URI);
        DataShareValuesBucket bucket;
        bucket.Put("KEYWORD", key);
        bucket.Put("VALUE", value);
        return helper.Insert(uri, bucket);
    }

    static int Update(DataShareHelper& helper, const std::string& key, const std::string& value)
    {
        Uri uri(SettingsProvider::TABLE_URI);
        DataShareValuesBucket bucket;
        bucket.Put("VALUE", value);
        return helper.Update(uri, DataSharePredicates().EqualTo("KEYWORD", key), bucket);
    }

    // The VALUE of the key's first row; nullopt when there is none or the query fails.
    static std::optional<std::string> Read(DataShareHelper& helper, const std::string& key)
    {
        Uri uri(SettingsProvider::TABLE_URI);
        std::vector<std::string> columns;
        auto resultSet = helper.Query(uri, DataSharePredicates().EqualTo("KEYWORD", key), columns);
        int index = -1;
        std::string value;
        if (resultSet == nullptr || resultSet->GoToFirstRow() != 0 || resultSet->GetColumnIndex("VALUE", index) != 0 ||
            resultSet->GetString(index, value) != 0) {
            return std::nullopt;
        }
        resultSet->Close();
        return value;
    }

    std::vector<std::string> WritesTraced() const
    {
        std::vector<std::string> lines;
        for (const TraceEvent& event : ctx_.EventsOf("settings.write")) {
            lines.push_back(event.Json().substr(event.Json().find(",\"ev\"")));
        }
        return lines;
    }

    TestDeviceContext ctx_;
    std::shared_ptr<VirtualProcess> client_ = ctx_.MakeClientProcess("client");
    sptr<IRemoteObject> token_ = [this] {
        ScopedProcess scope(client_);
        return sptr<IRemoteObject>(new IPCObjectStub(u"test.Token"));
    }();
    std::optional<SettingsProvider> provider_{std::in_place, ctx_};
};

TEST_F(SettingsProviderTest, WritesAndReadsRowsThroughTheClient)
{
    ASSERT_TRUE(provider_->Preset("settings.display.resolution_style", "1"));
    ASSERT_TRUE(provider_->Start());
    auto helper = Connect();
    ASSERT_NE(helper, nullptr);

    EXPECT_EQ(Read(*helper, "settings.display.resolution_style"), "1");
    EXPECT_GT(Insert(*helper, kMode, "2"), 0);
    EXPECT_EQ(Read(*helper, kMode), "2");
    EXPECT_GT(Insert(*helper, kMode, "3"), 0);  // replaces
    EXPECT_EQ(Update(*helper, kMode, "4"), 1);
    EXPECT_EQ(Update(*helper, "settings.missing", "5"), 0);
    EXPECT_EQ(Read(*helper, kMode), "4");
    EXPECT_EQ(Read(*helper, "settings.missing"), std::nullopt);

    // One row per key, all columns when none are named.
    Uri uri(SettingsProvider::TABLE_URI);
    std::vector<std::string> columns;
    auto all = helper->Query(uri, DataSharePredicates(), columns);
    ASSERT_NE(all, nullptr);
    int rows = 0;
    std::vector<std::string> names;
    EXPECT_EQ(all->GetRowCount(rows), 0);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(all->GetAllColumnNames(names), 0);
    EXPECT_EQ(names, (std::vector<std::string>{"KEYWORD", "VALUE"}));

    // Unknown columns and other URIs fail without touching the table.
    DataShareValuesBucket bad;
    bad.Put("KEYWORD", kMode);
    bad.Put("OTHER", "x");
    EXPECT_EQ(helper->Insert(uri, bad), -1);
    Uri other("datashare:///com.tarvo.other/entry/OTHER");
    DataShare::DatashareBusinessError error;
    EXPECT_EQ(helper->Query(other, DataSharePredicates(), columns, &error), nullptr);
    EXPECT_EQ(error.GetCode(), -1);

    EXPECT_EQ(
        WritesTraced(),
        (std::vector<std::string>{
            R"(,"ev":"settings.write","op":"insert","key":"settings.display.resolution_mode","value":"2","ok":true})",
            R"(,"ev":"settings.write","op":"insert","key":"settings.display.resolution_mode","value":"3","ok":true})",
            R"(,"ev":"settings.write","op":"update","key":"settings.display.resolution_mode","value":"4","ok":true})",
            R"(,"ev":"settings.write","op":"update","key":"settings.missing","value":"5","ok":true})",
            R"(,"ev":"settings.write","op":"insert","key":"settings.display.resolution_mode","value":"","ok":false})",
        }));
}

TEST_F(SettingsProviderTest, DownProviderRefusesConnectionsAndFailsOpenOnes)
{
    ASSERT_TRUE(provider_->Start());
    auto helper = Connect();
    ASSERT_NE(helper, nullptr);
    EXPECT_EQ(DataShareHelper::Creator(nullptr, SettingsProvider::TABLE_URI, SettingsProvider::EXTENSION_URI), nullptr);
    {
        ScopedProcess scope(client_);
        EXPECT_EQ(DataShareHelper::Creator(token_, "datashare:///com.tarvo.other", SettingsProvider::EXTENSION_URI),
                  nullptr);
    }

    provider_->SetUp(false);
    EXPECT_EQ(Connect(), nullptr);
    EXPECT_EQ(Insert(*helper, kMode, "2"), -1);
    EXPECT_EQ(Read(*helper, kMode), std::nullopt);

    provider_->SetUp(true);
    EXPECT_GT(Insert(*helper, kMode, "3"), 0);
    EXPECT_TRUE(helper->Release());
    EXPECT_FALSE(helper->Release());
    EXPECT_EQ(Insert(*helper, kMode, "4"), -1);  // never sent
    EXPECT_EQ(Read(*Connect(), kMode), "3");

    auto writes = ctx_.EventsOf("settings.write");
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(ValueText(*writes[0].Find("ok")), "false");
    EXPECT_EQ(ValueText(*writes[1].Find("ok")), "true");
}

TEST_F(SettingsProviderTest, ObserversOfAUriAreToldOnTheirOwnProcess)
{
    ASSERT_TRUE(provider_->Start());
    auto helper = Connect();
    ASSERT_NE(helper, nullptr);
    auto observerProcess = ctx_.MakeClientProcess("observer");
    sptr<CountingObserver> observer;
    sptr<CountingObserver> elsewhere;
    {
        ScopedProcess scope(observerProcess);
        observer = new CountingObserver();
        elsewhere = new CountingObserver();
    }
    Uri table(SettingsProvider::TABLE_URI);
    Uri other("datashare:///com.tarvo.settingsdata/entry/settingsdata/OTHER");
    helper->RegisterObserver(table, observer);
    helper->RegisterObserver(table, observer);
    helper->RegisterObserver(other, elsewhere);

    helper->NotifyChange(table);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    EXPECT_EQ(observer->Calls(), std::vector<std::shared_ptr<VirtualProcess>>{observerProcess});
    EXPECT_TRUE(elsewhere->Calls().empty());

    helper->UnregisterObserver(table, observer);
    helper->NotifyChange(table);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    EXPECT_EQ(observer->Calls().size(), 1u);
}

TEST_F(SettingsProviderTest, RowsOutliveTheProviderInItsDatabaseFile)
{
    ASSERT_TRUE(provider_->Start());
    {
        auto helper = Connect();
        ASSERT_NE(helper, nullptr);
        EXPECT_GT(Insert(*helper, kMode, "2"), 0);
    }
    provider_.reset();

    // The file is a plain SQLite database with the row in it.
    std::string path = ctx_.DataDir() + "/settings.db";
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "SELECT VALUE FROM SETTINGSDATA WHERE KEYWORD = ?", -1, &statement, nullptr),
              SQLITE_OK);
    sqlite3_bind_text(statement, 1, kMode, -1, SQLITE_STATIC);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)), "2");
    sqlite3_finalize(statement);
    sqlite3_close(db);

    provider_.emplace(ctx_);
    ASSERT_TRUE(provider_->Start());
    // Clients hear from the service manager that the provider was replaced.
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    auto helper = Connect();
    ASSERT_NE(helper, nullptr);
    EXPECT_EQ(Read(*helper, kMode), "2");
    EXPECT_TRUE(provider_->Preset(kMode, "7"));
    EXPECT_EQ(Read(*helper, kMode), "7");
    EXPECT_EQ(ctx_.EventsOf("settings.write").size(), 1u);
}

}  // namespace
}  // namespace Tarvo::Emu
