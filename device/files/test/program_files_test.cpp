#include "program_files.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace Tarvo::Emu {
namespace {

namespace fs = std::filesystem;

// Wherever the executable is, its files are below the same prefix, in their folders of the prefix.
TEST(ProgramFilesTest, FilesAreBelowThePrefixOfTheExecutable)
{
    const ProgramFiles files = ProgramFilesOf("/opt/zel/bin/zel_device");
    const struct {
        const std::string& path;
        const char* name;
    } cases[] = {
        {files.serviceLibrary, "libzel_manager_service.so"},
        {files.defaultConfig, "zel_manager_config.xml"},
        {files.configSchema, "zel_manager_config.xsd"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.path.rfind("/opt/zel/", 0), 0u) << c.path;
        EXPECT_EQ(fs::path(c.path).filename(), c.name);
        EXPECT_EQ(c.path.find(".."), std::string::npos) << c.path;
    }
    EXPECT_EQ(fs::path(files.defaultConfig).parent_path(), fs::path(files.configSchema).parent_path());
}

// The build tree has the installed layout: a program built here finds every file it ships with.
TEST(ProgramFilesTest, TheBuildTreeHoldsTheFilesOfItsPrograms)
{
    const std::string executable = RunningExecutable();
    ASSERT_EQ(fs::path(executable).filename(), "zel_device_files_test");
    const ProgramFiles& files = OwnProgramFiles();
    for (const std::string& path : {files.serviceLibrary, files.defaultConfig, files.configSchema}) {
        EXPECT_TRUE(fs::is_regular_file(path)) << path;
    }
}

}  // namespace
}  // namespace Tarvo::Emu
