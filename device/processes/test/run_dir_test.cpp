#include "run_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace Tarvo::Emu {
namespace {
namespace fs = std::filesystem;

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

mode_t ModeOf(const std::string& path)
{
    struct stat st {};
    return lstat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

class RunDirTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = fs::temp_directory_path().string() + "/run_dir_test-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        base_ = name;
        const char* tmpdir = getenv("TMPDIR");
        savedTmpdir_ = tmpdir != nullptr ? std::optional<std::string>(tmpdir) : std::nullopt;
        setenv("TMPDIR", base_.c_str(), 1);
    }
    void TearDown() override
    {
        if (savedTmpdir_) {
            setenv("TMPDIR", savedTmpdir_->c_str(), 1);
        } else {
            unsetenv("TMPDIR");
        }
        fs::remove_all(base_);
    }

    std::string base_;
    std::optional<std::string> savedTmpdir_;
    std::string error_;
};

TEST_F(RunDirTest, MakesAPrivateLockedFolderAndRemovesItWhenDone)
{
    const std::string path = base_ + "/device";
    {
        auto dir = RunDir::Open(path, &error_);
        ASSERT_NE(dir, nullptr) << error_;
        EXPECT_EQ(dir->Path(), path);
        EXPECT_EQ(ModeOf(path), 0700u);
        EXPECT_EQ(ModeOf(dir->SocketDir()), 0700u);
        EXPECT_EQ(ModeOf(dir->RegistryDir()), 0700u);
        EXPECT_EQ(ReadFile(dir->LockPath()), std::to_string(getpid()) + "\n");
    }
    EXPECT_FALSE(fs::exists(path));

    auto kept = RunDir::Open(path, &error_);
    ASSERT_NE(kept, nullptr) << error_;
    kept->Keep();
    kept.reset();
    EXPECT_TRUE(fs::exists(base_ + "/device/lock"));
}

TEST_F(RunDirTest, SecondDeviceOnTheSameFolderIsRefusedUntilTheFirstLeaves)
{
    const std::string path = base_ + "/device";
    auto first = RunDir::Open(path, &error_);
    ASSERT_NE(first, nullptr) << error_;

    EXPECT_EQ(RunDir::Open(path, &error_), nullptr);
    EXPECT_EQ(error_, "run folder " + path + " is in use by another device (pid " + std::to_string(getpid()) + ")");
    EXPECT_TRUE(fs::exists(first->LockPath()));

    first->Remove();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_NE(RunDir::Open(path, &error_), nullptr) << error_;
}

TEST_F(RunDirTest, StaleFolderOfADeadDeviceIsTakenOverAndEmptied)
{
    const std::string path = base_ + "/device";
    fs::create_directories(path + "/sock");
    fs::create_directories(path + "/registry");
    WriteFile(path + "/lock", "4000000\n");  // nobody holds its lock any more
    WriteFile(path + "/sock/1001", "");
    WriteFile(path + "/registry/1234", "old identity");
    WriteFile(path + "/samgr", "");

    auto dir = RunDir::Open(path, &error_);
    ASSERT_NE(dir, nullptr) << error_;
    EXPECT_EQ(ReadFile(dir->LockPath()), std::to_string(getpid()) + "\n");
    EXPECT_TRUE(fs::is_empty(dir->SocketDir()));
    EXPECT_TRUE(fs::is_empty(dir->RegistryDir()));
    EXPECT_FALSE(fs::exists(dir->ContextSocketPath()));

    dir->Remove();
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(RunDirTest, FolderTheUserMadeKeepsTheirFilesAndLosesOnlyTheDevicesOwn)
{
    const std::string path = base_ + "/mine";
    fs::create_directories(path);
    chmod(path.c_str(), 0755);
    WriteFile(path + "/notes.txt", "keep me");

    auto dir = RunDir::Open(path + "/", &error_);
    ASSERT_NE(dir, nullptr) << error_;
    EXPECT_EQ(dir->Path(), path);
    EXPECT_EQ(ModeOf(path), 0700u);
    WriteFile(dir->ContextSocketPath(), "");
    dir.reset();

    EXPECT_EQ(ReadFile(path + "/notes.txt"), "keep me");
    EXPECT_EQ(std::distance(fs::directory_iterator(path), fs::directory_iterator()), 1);
}

TEST_F(RunDirTest, UnusableFoldersAreRefusedWithTheReason)
{
    fs::create_directories(base_ + "/real");
    fs::create_symlink(base_ + "/real", base_ + "/link");
    WriteFile(base_ + "/file", "");
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
        error_.clear();
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
    ASSERT_NE(first, nullptr) << error_;
    ASSERT_NE(second, nullptr) << error_;
    EXPECT_NE(first->Path(), second->Path());
    EXPECT_EQ(fs::path(first->Path()).parent_path(), base_);
    EXPECT_EQ(ModeOf(first->Path()), 0700u);
    const std::string path = first->Path();
    first.reset();
    EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace Tarvo::Emu
