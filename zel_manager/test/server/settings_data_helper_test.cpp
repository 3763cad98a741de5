// Single rows of the settings database as the service reads and writes them, against the
// device's settings provider on SQLite.
#include "settings_data_helper.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>

#include "data_ability_observer_stub.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "settings_provider.h"
#include "test_device_context.h"
#include "work_tracker.h"
#include "zel_manager_service.h"

namespace Tarvo::Vantel {
namespace {
using Emu::SettingsProvider;
using HiviewDFX::LOG_INFO;
using Strings = std::vector<std::string>;

const std::string MODE_KEY = "settings.display.resolution_mode";

class CountingObserver : public AAFwk::DataAbilityObserverStub {
public:
    void OnChange() override { ++count; }
    std::atomic<int> count = 0;
};

class SettingsDataHelperTest : public testing::Test {
protected:
    // A settings provider over a fresh SQLite file and, unless told otherwise, the service's own
    // ability 65958, which the provider takes as the caller's token.
    void Boot(bool withService = true)
    {
        // One device at a time: the old one uninstalls its service manager as it goes.
        watcher_.reset();
        provider_.reset();
        service_.reset();
        ctx_.reset();
        ctx_ = std::make_unique<Emu::Test::TestDeviceContext>();
        service_ = ctx_->MakeServiceProcess("zel_manager");
        provider_ = std::make_unique<SettingsProvider>(*ctx_);
        if (withService) {
            ScopedProcess scope(service_);
            ctx_->AddSystemAbility(ZelManagerService::ZEL_MANAGER_SERVICE_ID,
                                   sptr<IRemoteObject>(new IPCObjectStub(u"Tarvo.IZelManager")));
        }
    }
    std::unique_ptr<SettingsDataHelper> MakeHelper()
    {
        ScopedProcess scope(service_);
        return std::make_unique<SettingsDataHelper>();
    }
    // Watches the table from a process of its own.
    sptr<CountingObserver> Observe()
    {
        ScopedProcess scope(ctx_->MakeClientProcess("observer"));
        sptr<CountingObserver> observer = new CountingObserver();
        watcher_ = DataShare::DataShareHelper::Creator(sptr<IRemoteObject>(new IPCObjectStub(u"test.Observer")),
                                                       SettingsProvider::TABLE_URI, SettingsProvider::EXTENSION_URI);
        if (watcher_ != nullptr) {
            watcher_->RegisterObserver(Uri(SettingsProvider::TABLE_URI), observer);
        }
        return observer;
    }
    Strings WritesTraced() const
    {
        Strings lines;
        for (const Emu::TraceEvent& event : ctx_->EventsOf("settings.write")) {
            lines.push_back(event.Json().substr(event.Json().find(",\"op\"")));
        }
        return lines;
    }

    std::unique_ptr<Emu::Test::TestDeviceContext> ctx_;
    std::shared_ptr<VirtualProcess> service_;
    std::unique_ptr<SettingsProvider> provider_;
    std::shared_ptr<DataShare::DataShareHelper> watcher_;
    HiviewDFX::LogCapture log_;
};

TEST_F(SettingsDataHelperTest, AnUnconnectedHelperAnswersMinusOneToEverything)
{
    std::string value = "kept";
    {
        SettingsDataHelper helper;  // no device, so no service manager
        EXPECT_EQ(helper.Query(MODE_KEY, value), -1);
        EXPECT_EQ(helper.Insert(MODE_KEY, "2"), -1);
        EXPECT_EQ(helper.Update(MODE_KEY, "2"), -1);
    }
    Boot(false);
    ASSERT_TRUE(provider_->Start());
    EXPECT_EQ(MakeHelper()->Query(MODE_KEY, value), -1);
    Boot();
    EXPECT_EQ(MakeHelper()->Insert(MODE_KEY, "2"), -1);  // provider not started: refused silently
    EXPECT_EQ(value, "kept");
    EXPECT_EQ(log_.Messages(LOG_INFO),
              (Strings{"SettingsDataHelper GetSystemAbilityManager failed.", "dataShareHelper_ is nullptr",
                       "dataShareHelper_ is nullptr", "dataShareHelper_ is nullptr",
                       "SettingsDataHelper GetSystemAbility Service Failed.", "dataShareHelper_ is nullptr",
                       "dataShareHelper_ is nullptr"}));
    EXPECT_TRUE(WritesTraced().empty());
}

// Update inserts a missing key; Insert replaces an existing one; only the provider's -1 fails.
TEST_F(SettingsDataHelperTest, RowsAreReadWrittenAndAnnouncedOncePerWrite)
{
    Boot();
    ASSERT_TRUE(provider_->Preset(MODE_KEY, "1"));
    ASSERT_TRUE(provider_->Start());
    auto observer = Observe();
    auto helper = MakeHelper();
    log_.Clear();

    std::string value = "kept";
    EXPECT_EQ(helper->Query("settings.display.absent", value), -1);
    EXPECT_EQ(value, "kept");
    EXPECT_EQ(helper->Update(MODE_KEY, "3"), 0);
    EXPECT_EQ(helper->Update("settings.display.other", "2"), 0);
    EXPECT_EQ(helper->Insert(MODE_KEY, "4"), 0);
    provider_->SetUp(false);
    EXPECT_EQ(helper->Insert(MODE_KEY, "5"), -1);
    EXPECT_EQ(helper->Update(MODE_KEY, "5"), -1);
    provider_->SetUp(true);
    EXPECT_EQ(helper->Query(MODE_KEY, value), 0);
    EXPECT_EQ(value, "4");
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10)));

    EXPECT_EQ(log_.Messages(LOG_INFO),
              (Strings{"DataShareHelper query failed,go to first row error", "DataShareHelper query success,value[1]",
                       "DataShareHelper update success", "DataShareHelper query failed,go to first row error",
                       "DataShareHelper insert success", "DataShareHelper insert success",
                       "DataShareHelper insert failed, insert result:-1", "DataShareHelper query error, result is null",
                       "DataShareHelper insert failed, insert result:-1", "DataShareHelper query success,value[4]"}));
    EXPECT_EQ(WritesTraced(),
              (Strings{R"(,"op":"update","key":"settings.display.resolution_mode","value":"3","ok":true})",
                       R"(,"op":"insert","key":"settings.display.other","value":"2","ok":true})",
                       R"(,"op":"insert","key":"settings.display.resolution_mode","value":"4","ok":true})",
                       R"(,"op":"insert","key":"settings.display.resolution_mode","value":"5","ok":false})",
                       R"(,"op":"insert","key":"settings.display.resolution_mode","value":"5","ok":false})"}));
    EXPECT_EQ(observer->count, 3);
}

}  // namespace
}  // namespace Tarvo::Vantel
