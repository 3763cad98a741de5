#include "parameter_service.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "parameters.h"
#include "test_device_context.h"
#include "work_tracker.h"

namespace Tarvo::Emu::Test {
namespace {

class ParameterServiceTest : public testing::Test {
protected:
    std::string StoredFile()
    {
        std::ifstream in(device_.DataDir() + "/parameters");
        std::stringstream content;
        content << in.rdbuf();
        return content.str();
    }

    TestDeviceContext device_{TestDeviceContext::Clock::VIRTUAL};
    std::shared_ptr<VirtualProcess> client_ = device_.MakeClientProcess("zel_manager");
};

TEST_F(ParameterServiceTest, SetsThroughIpcAreTracedAndPresetsAreNot)
{
    ParameterService service(device_);
    service.Preset("const.window.foldscreen.type", "2");
    service.Start();
    {
        ScopedProcess scope(client_);
        EXPECT_EQ(system::GetParameter("const.window.foldscreen.type", ""), "2");
        EXPECT_TRUE(system::SetParameter("zel.currunt_resolution_ratio", "1"));
        EXPECT_FALSE(system::SetParameter("bad=key", "1"));
        EXPECT_EQ(system::GetParameter("zel.currunt_resolution_ratio", "0"), "1");
    }
    EXPECT_EQ(device_.TraceLines(),
              std::vector<std::string>{R"({"t":0,"ev":"param.set","key":"zel.currunt_resolution_ratio","value":"1"})"});
}

TEST_F(ParameterServiceTest, ParametersOutliveTheServiceOnTheSameDataDir)
{
    {
        ParameterService first(device_);
        first.Start();
        first.Preset("a.b", "stored");
        ScopedProcess scope(client_);
        ASSERT_TRUE(system::SetParameter("zel.currunt_resolution_ratio", "1"));
    }
    EXPECT_EQ(StoredFile(), "a.b=stored\nzel.currunt_resolution_ratio=1\n");
    std::ofstream(device_.DataDir() + "/parameters", std::ios::app) << "no separator\n=empty key\nc.d=x=y\n";

    // A preset made before start takes precedence over what was stored.
    ParameterService second(device_);
    second.Preset("a.b", "preset");
    second.Start();
    // Clients hear from the service manager that the service was replaced.
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10)));
    ScopedProcess scope(client_);
    EXPECT_EQ(system::GetParameter("a.b", ""), "preset");
    EXPECT_EQ(system::GetParameter("zel.currunt_resolution_ratio", ""), "1");
    EXPECT_EQ(system::GetParameter("c.d", ""), "x=y");
    EXPECT_EQ(StoredFile(), "a.b=preset\nc.d=x=y\nzel.currunt_resolution_ratio=1\n");
}

}  // namespace
}  // namespace Tarvo::Emu::Test
