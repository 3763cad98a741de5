// The service's dump as a client gets it: the built library started with the product
// configuration, asked through the reserved dump code while requests come in.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "config_folders.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
#include "iservice_registry.h"
#include "platform_test_support.h"
#include "service_host.h"
#include "virtual_clock.h"
#include "zel_manager_proxy.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
namespace fs = std::filesystem;
constexpr int32_t SERVICE_ID = 65958;
const std::string DESKTOP = "com.tarvo.vistadeck";

class ZelManagerDumpTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        char pattern[] = "/tmp/zel_dump_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        const fs::path config = fs::path(dir_) / "etc/zel_manager/zel_manager_config.xml";
        fs::create_directories(config.parent_path());
        fs::copy_file(fs::path(ZEL_SOURCE_DIR) / "zel_manager/etc/zel_manager_config.xml", config);
        ConfigPolicy::SetConfigFolders({dir_});
        std::string error;
        ASSERT_TRUE(host_.LoadLibrary(ZEL_SERVICE_LIBRARY, &error)) << error;
        samgr_.AddAbility<IPCObjectStub>(501, platform_, u"tarvo.appexecfwk.AppMgr");
        samgr_.AddAbility<IPCObjectStub>(4607, platform_, u"platform.Ability");
        host_.StartAbilities();
        ASSERT_TRUE(VirtualClock::AdvanceTo(PlatformClock::time_point(std::chrono::milliseconds(2000))));
        ASSERT_TRUE(VirtualClock::WaitQuiet());
    }
    void TearDown() override { fs::remove_all(dir_); }

    // The service as the calling thread's process reaches it.
    static sptr<ZelManagerProxy> Service()
    {
        auto manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        return new ZelManagerProxy(manager->GetSystemAbility(SERVICE_ID));
    }
    static std::string Dump(const sptr<ZelManagerProxy>& service, const std::vector<std::u16string>& args)
    {
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        data.WriteInterfaceToken(IZelManager::GetDescriptor());
        data.WriteInt32(static_cast<int32_t>(args.size()));
        for (const auto& arg : args) {
            data.WriteString16(arg);
        }
        EXPECT_EQ(service->AsObject()->SendRequest(DUMP_TRANSACTION, data, reply, option), ERR_NONE);
        EXPECT_EQ(reply.ReadInt32(), 0);
        return reply.ReadString();
    }

    std::string dir_;
    std::shared_ptr<VirtualProcess> platform_ = MakeCaller(CallerKind::NATIVE, 11);
    std::shared_ptr<VirtualProcess> system_ = MakeCaller(CallerKind::SYSTEM_APP, 50);
    std::shared_ptr<VirtualProcess> native_ = MakeCaller(CallerKind::NATIVE, 51);
    std::shared_ptr<VirtualProcess> shell_ = MakeCaller(CallerKind::SHELL, 52);
    ServiceHost host_{MakeCaller(CallerKind::NATIVE, 1000)};
    Tarvo::Test::ScopedServiceManager samgr_{MakeCaller(CallerKind::NATIVE, 10)};
};

TEST_F(ZelManagerDumpTest, TextShowsEachComponentInItsOwnSection)
{
    {
        ScopedProcess scope(system_);
        Service()->SetScene(DESKTOP, "BACK_DESKTOP", 1);
        Service()->SetScene(DESKTOP, "FOLDER_OPEN", 1);
    }
    {
        ScopedProcess scope(native_);
        EXPECT_EQ(Service()->SetThermalPolicy({{101, 90}}), 1u);
        EXPECT_EQ(Service()->SetGameFpsForThermalControl("com.example.racer", 60), 0u);
    }
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ScopedProcess scope(shell_);
    const std::string text = Dump(Service(), {});
    EXPECT_EQ(text.rfind("Configuration\n  switch supperGameFpsSolution = true\n", 0), 0u) << text;
    EXPECT_NE(text.find("\n  numbers powermode = 60 120\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\n  scene FOLDER_OPEN interruptible\n"), std::string::npos) << text;
    const size_t foreground = text.find("Foreground\n");
    ASSERT_NE(foreground, std::string::npos) << text;
    EXPECT_EQ(text.substr(foreground),
              "Foreground\n"
              "  stack (bottom first): none\n"
              "  reported: com.tarvo.vistadeck\n"
              "Scenes\n"
              "  active:\n"
              "    BACK_DESKTOP pkg=com.tarvo.vistadeck count=1 freezing\n"
              "  current: BACK_DESKTOP\n"
              "  waiting:\n"
              "    FOLDER_OPEN pkg=com.tarvo.vistadeck count=1\n"
              "  parked package: none\n"
              "  origin package: none\n"
              "  freezing time-out pending: yes\n"
              "Votes\n"
              "  thermal force: 90\n"
              "  light: type0 no, type1 no, factor no\n"
              "  last scene vote: VOTER_SCENE status=on min=0 max=0 desc=BACK_APP_ANIMATION\n"
              "  last thermal vote: VOTER_THERMAL status=on min=0 max=90\n"
              "  last packages sent: com.tarvo.vistadeck:0:-1\n"
              "Games\n"
              "  enabled: yes (at most 1000 packages, 5 callbacks each)\n"
              "  packages: none\n"
              "  classifying: none\n"
              "  target com.example.racer = 60\n"
              "Resolution\n"
              "  mode: none\n"
              "  style: none\n"
              "  retries: configure 1, database 0\n");
    const std::string json = Dump(Service(), {u"--json"});
    EXPECT_EQ(json.rfind("{\"config\":{\"switches\":{\"supperGameFpsSolution\":true,", 0), 0u) << json;
    EXPECT_NE(json.find(R"("targets":{"com.example.racer":60})"), std::string::npos) << json;
    EXPECT_EQ(json.back(), '\n');
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
