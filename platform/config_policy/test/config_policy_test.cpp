#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "config_folders.h"
#include "config_policy_utils.h"

namespace Tarvo::ConfigPolicy {
namespace {
namespace fs = std::filesystem;

class ConfigPolicyTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/config_policy_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = pattern;
        for (const char* folder : {"system", "chip", "product"}) {
            fs::create_directories(root_ / folder / "etc");
        }
        SetConfigFolders({(root_ / "system").string(), (root_ / "chip").string(), (root_ / "product").string()});
    }
    void TearDown() override
    {
        SetConfigFolders({});
        fs::remove_all(root_);
    }
    void Touch(const fs::path& path) { std::ofstream(path) << "x"; }

    fs::path root_;
    char buf_[4097] = {};
};

TEST_F(ConfigPolicyTest, TheLastFolderHoldingTheFileWins)
{
    Touch(root_ / "system/etc/zel.xml");
    Touch(root_ / "chip/etc/zel.xml");
    std::string chip = (root_ / "chip/etc/zel.xml").string();
    EXPECT_EQ(GetOneCfgFile("etc/zel.xml", buf_, sizeof(buf_)), buf_);
    EXPECT_EQ(std::string(buf_), chip);

    Touch(root_ / "product/etc/zel.xml");
    EXPECT_EQ(std::string(GetOneCfgFile("etc/zel.xml", buf_, sizeof(buf_))), (root_ / "product/etc/zel.xml").string());
    // A directory of that name is no file.
    fs::create_directories(root_ / "product/etc/dir.xml");
    Touch(root_ / "system/etc/dir.xml");
    EXPECT_EQ(std::string(GetOneCfgFile("etc/dir.xml", buf_, sizeof(buf_))), (root_ / "system/etc/dir.xml").string());
}

TEST_F(ConfigPolicyTest, MissingFilesBadArgumentsAndNoFoldersGiveNull)
{
    EXPECT_EQ(GetOneCfgFile("etc/none.xml", buf_, sizeof(buf_)), nullptr);
    Touch(root_ / "system/etc/zel.xml");
    EXPECT_EQ(GetOneCfgFile(nullptr, buf_, sizeof(buf_)), nullptr);
    EXPECT_EQ(GetOneCfgFile("", buf_, sizeof(buf_)), nullptr);
    EXPECT_EQ(GetOneCfgFile("etc/zel.xml", nullptr, sizeof(buf_)), nullptr);
    SetConfigFolders({});
    EXPECT_EQ(GetOneCfgFile("etc/zel.xml", buf_, sizeof(buf_)), nullptr);
    EXPECT_EQ(buf_[0], '\0');
}

TEST_F(ConfigPolicyTest, APathThatDoesNotFitGivesNullEvenWithAShorterCopyElsewhere)
{
    fs::create_directories(root_ / "s/etc");
    SetConfigFolders({(root_ / "s").string(), (root_ / "product").string()});
    Touch(root_ / "s/etc/zel.xml");
    Touch(root_ / "product/etc/zel.xml");
    std::string path = (root_ / "product/etc/zel.xml").string();
    auto length = static_cast<unsigned int>(path.size());
    EXPECT_EQ(GetOneCfgFile("etc/zel.xml", buf_, length), nullptr);
    EXPECT_EQ(buf_[0], '\0');
    EXPECT_EQ(GetOneCfgFile("etc/zel.xml", buf_, length + 1), buf_);
    EXPECT_EQ(std::string(buf_), path);
}

}  // namespace
}  // namespace Tarvo::ConfigPolicy
