#include "settings_data_helper.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "data_ability_observer_stub.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "settings_provider.h"
#include "test_device_context.h"
#include "virtual_process.h"
#include "work_tracker.h"
#include "zel_manager_service.h"

namespace Tarvo::Vantel {
namespace {

using Emu::SettingsProvider;
using Emu::Test::TestDeviceContext;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LogCapture;

constexpr auto QUIET = std::chrono::seconds(10);
const std::string MODE_KEY = "settings.display.resolution_mode";

class CountingObserver : public AAFwk::DataAbilityObserverStub {
public:
    void OnChange() override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++count_;
    }
    int Count()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return count_;
    }

private:
    std::mutex mutex_;
    int count_ = 0;
};

class SettingsDataHelperTest : public testing::Test {
protected:
    // The device: a settings provider over a fresh SQLite file and, unless told otherwise, the
    // service's own ability 65958 that serves as the caller token.
    void Boot(bool withService = true)
    {
        // One device at a time: the old one uninstalls its service manager as it goes.
        watcher_.reset();
        provider_.reset();
        service_.reset();
        ctx_.reset();
        ctx_ = std::make_unique<TestDeviceContext>();
        service_ = ctx_->MakeServiceProcess("zel_manager");
        provider_ = std::make_unique<SettingsProvider>(*ctx_);
        if (withService) {
            ScopedProcess scope(service_);
            ctx_->AddSystemAbility(ZelManagerService::ZEL_MANAGER_SERVICE_ID,
                                   sptr<IRemoteObject>(new IPCObjectStub(u"Tarvo.IZelManager")));
        }
    }

    // A helper made as the service makes it: from the service's own process.
    std::unique_ptr<SettingsDataHelper> MakeHelper()
    {
        ScopedProcess scope(service_);
        return std::make_unique<SettingsDataHelper>();
    }

    // Watches the table from a process of its own; counts the change notices.
    sptr<CountingObserver> Observe()
    {
        auto process = ctx_->MakeClientProcess("observer");
        ScopedProcess scope(process);
        sptr<CountingObserver> observer = new CountingObserver();
        sptr<IRemoteObject> token = new IPCObjectStub(u"test.Observer");
        watcher_ =
            DataShare::DataShareHelper::Creator(token, SettingsProvider::TABLE_URI, SettingsProvider::EXTENSION_URI);
        EXPECT_NE(watcher_, nullptr);
        if (watcher_ != nullptr) {
            watcher_->RegisterObserver(Uri(SettingsProvider::TABLE_URI), observer);
        }
        return observer;
    }

    std::vector<std::string> WritesTraced() const
    {
        std::vector<std::string> lines;
        for (const Emu::TraceEvent& event : ctx_->EventsOf("settings.write")) {
            lines.push_back(event.Json().substr(event.Json().find(",\"op\"")));
        }
        return lines;
    }

    std::unique_ptr<TestDeviceContext> ctx_;
    std::shared_ptr<VirtualProcess> service_;
    std::unique_ptr<SettingsProvider> provider_;
    std::shared_ptr<DataShare::DataShareHelper> watcher_;
};

TEST_F(SettingsDataHelperTest, UnconnectedHelperAnswersMinusOneToEverything)
{
    LogCapture logs;
    std::string value = "kept";
    {
        // No device at all: no service manager.
        SettingsDataHelper helper;
        EXPECT_EQ(helper.Query(MODE_KEY, value), -1);
        EXPECT_EQ(helper.Insert(MODE_KEY, "2"), -1);
        EXPECT_EQ(helper.Update(MODE_KEY, "2"), -1);
    }
    Boot(false);
    ASSERT_TRUE(provider_->Start());
    EXPECT_EQ(MakeHelper()->Query(MODE_KEY, value), -1);
    Boot();
    // Provider not started: the connection is refused, silently.
    EXPECT_EQ(MakeHelper()->Insert(MODE_KEY, "2"), -1);

    EXPECT_EQ(value, "kept");
    EXPECT_EQ(
        logs.Messages(LOG_INFO),
        (std::vector<std::string>{"SettingsDataHelper GetSystemAbilityManager failed.", "dataShareHelper_ is nullptr",
                                  "dataShareHelper_ is nullptr", "dataShareHelper_ is nullptr",
                                  "SettingsDataHelper GetSystemAbility Service Failed.", "dataShareHelper_ is nullptr",
                                  "dataShareHelper_ is nullptr"}));
    EXPECT_TRUE(WritesTraced().empty());
}

TEST_F(SettingsDataHelperTest, QueryReadsTheValueOfAnExistingKeyOnly)
{
    Boot();
    ASSERT_TRUE(provider_->Preset(MODE_KEY, "3"));
    ASSERT_TRUE(provider_->Start());
    auto helper = MakeHelper();
    LogCapture logs;

    std::string value = "kept";
    EXPECT_EQ(helper->Query("settings.display.absent", value), -1);
    EXPECT_EQ(value, "kept");
    EXPECT_EQ(helper->Query(MODE_KEY, value), 0);
    EXPECT_EQ(value, "3");
    EXPECT_EQ(logs.Messages(LOG_INFO), (std::vector<std::string>{"DataShareHelper query failed,go to first row error",
                                                                 "DataShareHelper query success,value[3]"}));
}

TEST_F(SettingsDataHelperTest, UpdateOfAMissingKeyInsertsBothColumnsAndNotifies)
{
    Boot();
    ASSERT_TRUE(provider_->Start());
    auto observer = Observe();
    auto helper = MakeHelper();
    LogCapture logs;

    EXPECT_EQ(helper->Update(MODE_KEY, "2"), 0);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(QUIET));

    EXPECT_EQ(logs.Messages(LOG_INFO), (std::vector<std::string>{"DataShareHelper query failed,go to first row error",
                                                                 "DataShareHelper insert success"}));
    EXPECT_EQ(WritesTraced(),
              (std::vector<std::string>{
                  R"(,"op":"insert","key":"settings.display.resolution_mode","value":"2","ok":true})"}));
    EXPECT_EQ(observer->Count(), 1);
    std::string value;
    EXPECT_EQ(MakeHelper()->Query(MODE_KEY, value), 0);
    EXPECT_EQ(value, "2");
}

TEST_F(SettingsDataHelperTest, UpdateOfAnExistingKeyChangesOnlyTheValueAndNotifies)
{
    Boot();
    ASSERT_TRUE(provider_->Preset(MODE_KEY, "1"));
    ASSERT_TRUE(provider_->Start());
    auto observer = Observe();
    auto helper = MakeHelper();
    LogCapture logs;

    EXPECT_EQ(helper->Update(MODE_KEY, "3"), 0);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(QUIET));

    EXPECT_EQ(logs.Messages(LOG_INFO),
              (std::vector<std::string>{"DataShareHelper query success,value[1]", "DataShareHelper update success"}));
    EXPECT_EQ(WritesTraced(),
              (std::vector<std::string>{
                  R"(,"op":"update","key":"settings.display.resolution_mode","value":"3","ok":true})"}));
    EXPECT_EQ(observer->Count(), 1);
}

TEST_F(SettingsDataHelperTest, InsertCountsOnlyTheProvidersFailure)
{
    Boot();
    ASSERT_TRUE(provider_->Start());
    auto observer = Observe();
    auto helper = MakeHelper();
    LogCapture logs;

    EXPECT_EQ(helper->Insert(MODE_KEY, "1"), 0);
    EXPECT_EQ(helper->Insert(MODE_KEY, "2"), 0);  // the provider replaces an existing key
    provider_->SetUp(false);
    EXPECT_EQ(helper->Insert(MODE_KEY, "3"), -1);
    EXPECT_EQ(helper->Update(MODE_KEY, "3"), -1);
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(QUIET));

    EXPECT_EQ(logs.Messages(LOG_INFO),
              (std::vector<std::string>{"DataShareHelper insert success", "DataShareHelper insert success",
                                        "DataShareHelper insert failed, insert result:-1",
                                        "DataShareHelper query error, result is null",
                                        "DataShareHelper insert failed, insert result:-1"}));
    EXPECT_EQ(observer->Count(), 2);
    provider_->SetUp(true);
    std::string value;
    EXPECT_EQ(helper->Query(MODE_KEY, value), 0);
    EXPECT_EQ(value, "2");
}

}  // namespace
}  // namespace Tarvo::Vantel
