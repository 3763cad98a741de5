#include "run_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace Tarvo::Emu {
namespace {
namespace fs = std::filesystem;

std::string ReadFile(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

mode_t ModeOf(const std::string& path)
{
    struct stat st {};
    return lstat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

class RunDirTest : public testing::Test {
protected:
    // Every test runs in a process of its own: the temporary directory may stay changed.
    void SetUp() override
    {
        std::string name = fs::temp_directory_path().string() + "/run_dir_test-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        base_ = name;
        path_ = base_ + "/device";
        setenv("TMPDIR", base_.c_str(), 1);
    }
    void TearDown() override { fs::remove_all(base_); }

    std::string base_;
    std::string path_;
    std::string error_;
};

TEST_F(RunDirTest, MakesAPrivateLockedFolderAndRemovesItWhenDone)
{
    auto dir = RunDir::Open(path_, &error_);
    ASSERT_NE(dir, nullptr) << error_;
    EXPECT_EQ(dir->Path(), path_);
    for (const std::string& folder : {path_, dir->SocketDir(), dir->RegistryDir()}) {
        EXPECT_EQ(ModeOf(folder), 0700u) << folder;
    }
    EXPECT_EQ(ReadFile(dir->LockPath()), std::to_string(getpid()) + "\n");
    dir.reset();
    EXPECT_FALSE(fs::exists(path_));

    dir = RunDir::Open(path_, &error_);
    ASSERT_NE(dir, nullptr) << error_;
    dir->Keep();
    dir.reset();
    EXPECT_TRUE(fs::exists(path_ + "/lock"));
}

TEST_F(RunDirTest, SecondDeviceOnTheSameFolderIsRefusedUntilTheFirstLeaves)
{
    auto first = RunDir::Open(path_, &error_);
    ASSERT_NE(first, nullptr) << error_;
    EXPECT_EQ(RunDir::Open(path_, &error_), nullptr);
    EXPECT_EQ(error_, "run folder " + path_ + " is in use by another device (pid " + std::to_string(getpid()) + ")");
    EXPECT_TRUE(fs::exists(first->LockPath())) << "the refused one removed nothing";

    first->Remove();
    EXPECT_FALSE(fs::exists(path_));
    EXPECT_NE(RunDir::Open(path_, &error_), nullptr) << error_;
}

TEST_F(RunDirTest, StaleFolderOfADeadDeviceIsTakenOverAndEmptied)
{
    fs::create_directories(path_ + "/sock");
    fs::create_directories(path_ + "/registry");
    std::ofstream(path_ + "/lock") << "4000000\n";  // nobody holds its lock any more
    for (const char* stale : {"/sock/1001", "/registry/1234", "/samgr"}) {
        std::ofstream(path_ + stale) << "old";
    }
    auto dir = RunDir::Open(path_, &error_);
    ASSERT_NE(dir, nullptr) << error_;
    EXPECT_EQ(ReadFile(dir->LockPath()), std::to_string(getpid()) + "\n");
    EXPECT_TRUE(fs::is_empty(dir->SocketDir()));
    EXPECT_TRUE(fs::is_empty(dir->RegistryDir()));
    EXPECT_FALSE(fs::exists(dir->ContextSocketPath()));
    dir->Remove();
    EXPECT_FALSE(fs::exists(path_));
}

TEST_F(RunDirTest, FolderTheUserMadeKeepsTheirFilesAndLosesOnlyTheDevicesOwn)
{
    fs::create_directories(path_);
    chmod(path_.c_str(), 0755);
    std::ofstream(path_ + "/notes.txt") << "keep me";
    auto dir = RunDir::Open(path_ + "/", &error_);
    ASSERT_NE(dir, nullptr) << error_;
    EXPECT_EQ(dir->Path(), path_);
    EXPECT_EQ(ModeOf(path_), 0700u);
    std::ofstream(dir->ContextSocketPath()) << "";
    dir.reset();
    EXPECT_EQ(ReadFile(path_ + "/notes.txt"), "keep me");
    EXPECT_EQ(std::distance(fs::directory_iterator(path_), fs::directory_iterator()), 1);
}

TEST_F(RunDirTest, UnusableFoldersAreRefusedWithTheReason)
{
    fs::create_directories(base_ + "/real");
    fs::create_symlink(base_ + "/real", base_ + "/link");
    std::ofstream(base_ + "/file") << "";
    const std::string tooLong = base_ + "/" + std::string(RunDir::kMaxPathLength, 'x');
    const struct {
        std::string path;
        std::string error;
    } cases[] = {
        {"", "run folder: empty path"},
        {base_ + "/link", base_ + "/link is not a folder"},
        {base_ + "/file", base_ + "/file is not a folder"},
        {base_ + "/missing/device", "cannot create " + base_ + "/missing/device: No such file or directory"},
        {tooLong, "run folder " + tooLong + ": path longer than 90 bytes"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(RunDir::Open(c.path, &error_), nullptr) << c.path;
        EXPECT_EQ(error_, c.error);
    }
    EXPECT_FALSE(fs::exists(tooLong));
}

TEST_F(RunDirTest, DefaultAndTemporaryFoldersFollowTheEnvironment)
{
    setenv("XDG_RUNTIME_DIR", "/run/user/4242", 1);
    EXPECT_EQ(RunDir::DefaultPath(), "/run/user/4242/zel_device");
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(RunDir::DefaultPath(), base_ + "/zel_device-" + std::to_string(geteuid()));

    auto first = RunDir::OpenTemporary(&error_);
    auto second = RunDir::OpenTemporary(&error_);
    ASSERT_TRUE(first && second) << error_;
    EXPECT_NE(first->Path(), second->Path());
    EXPECT_EQ(fs::path(first->Path()).parent_path(), base_);
    EXPECT_EQ(ModeOf(first->Path()), 0700u);
    const std::string path = first->Path();
    first.reset();
    EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace Tarvo::Emu
