#include "process_registry.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>

namespace Tarvo {
namespace {

class ProcessRegistryTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/zel-registry-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override
    {
        for (const char* name : {"/41", "/42", "/41.tmp"}) {
            unlink((dir_ + name).c_str());
        }
        rmdir(dir_.c_str());
    }
    void WriteRaw(const std::string& content) { std::ofstream(dir_ + "/41") << content; }

    std::string dir_;
};

TEST_F(ProcessRegistryTest, RegisteredIdentitiesAreFoundByRealAndEmulatedPid)
{
    ProcessRegistry registry(dir_);
    std::string error;
    ASSERT_TRUE(registry.Register(41, {{501, 1000, 7, (1ULL << 32) | 7, "app_mgr"}, {401, 1001, 8, 8, ""}}, &error));
    std::vector<ProcessIdentity> all = registry.IdentitiesOf(41);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].fullTokenId, (1ULL << 32) | 7);
    EXPECT_EQ(all[1].name, "");
    std::optional<ProcessIdentity> found = registry.Lookup(41, 501);
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->uid, 1000);
    EXPECT_EQ(found->name, "app_mgr");
    EXPECT_FALSE(registry.Lookup(41, 999).has_value());
    EXPECT_FALSE(registry.Lookup(42, 501).has_value());

    ASSERT_TRUE(registry.Register(41, {{601, 1, 2, 3, "next"}}, &error));
    EXPECT_FALSE(registry.Lookup(41, 501).has_value());
    registry.Unregister(41);
    EXPECT_TRUE(registry.IdentitiesOf(41).empty());
}

TEST_F(ProcessRegistryTest, RefusesListsItCannotKeep)
{
    ProcessRegistry registry(dir_);
    std::string error;
    EXPECT_FALSE(registry.Register(41, {}, &error));
    EXPECT_FALSE(registry.Register(41, std::vector<ProcessIdentity>(65, {1, 1, 1, 1, "a"}), &error));
    EXPECT_FALSE(registry.Register(41, {{1, 1, 1, 1, "two words"}}, &error));
    EXPECT_EQ(error, "invalid identity for pid 1");
    ProcessRegistry missing(dir_ + "/absent");
    EXPECT_FALSE(missing.Register(41, {{1, 1, 1, 1, "a"}}, &error));
    EXPECT_NE(error.find("cannot write"), std::string::npos);
}

TEST_F(ProcessRegistryTest, MalformedEntriesCountAsUnregistered)
{
    ProcessRegistry registry(dir_);
    const std::string header = "zel-registry 1\n";
    const std::string cases[] = {
        "",
        "zel-registry 2\n501 1 2 3 a\n",
        header + "501 1 2 3 a",
        header + "501 x 2 3 a\n",
        header + "501 1 2 99999999999999999999999 a\n",
        header + "-5 1 2 3 a\n",
        header + "501 1 2 3 a\tb\n",
        header + std::string(20000, '1') + "\n",
    };
    for (const std::string& content : cases) {
        WriteRaw(content);
        EXPECT_TRUE(registry.IdentitiesOf(41).empty()) << content.substr(0, 40);
    }
    WriteRaw(header + "501 1 2 3 a\n");
    EXPECT_EQ(registry.IdentitiesOf(41).size(), 1u);
}

}  // namespace
}  // namespace Tarvo
