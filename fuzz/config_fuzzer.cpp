// The product configuration reader over a file of any content, found where the platform's
// configuration lookup finds it. Whatever the file holds, loading returns, and the number lists it
// keeps hold only what the file spelled as numbers.
//
// Input: the file's bytes.

#include <libxml/xmlerror.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "config_folders.h"
#include "fuzz_support.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
std::filesystem::path g_root;

void RemoveRoot()
{
    std::error_code ignored;
    std::filesystem::remove_all(g_root, ignored);
}

// libxml2 prints each parse error on stderr itself; millions of them would drown the fuzzer's output.
void IgnoreXmlError(void*, const char*, ...) {}

// A configuration folder of this run's own, removed at exit.
std::filesystem::path MakeConfigFile()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zel_fuzz_config.XXXXXX").string();
    FUZZ_REQUIRE(mkdtemp(pattern.data()) != nullptr);
    g_root = pattern;
    std::atexit(RemoveRoot);
    std::filesystem::path file = g_root / ZelManagerConfig::CONFIG_RELATIVE_PATH;
    std::filesystem::create_directories(file.parent_path());
    ConfigPolicy::SetConfigFolders({g_root.string()});
    xmlSetGenericErrorFunc(nullptr, IgnoreXmlError);
    return file;
}
}  // namespace
}  // namespace Tarvo::Vantel

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using Tarvo::Vantel::ZelManagerConfig;
    static const std::filesystem::path file = Tarvo::Vantel::MakeConfigFile();
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        FUZZ_REQUIRE(out.good());
    }
    ZelManagerConfig::GetEnableConfig().clear();
    ZelManagerConfig::GetIntNumbersConfig().clear();
    bool loaded = ZelManagerConfig::LoadConfigXml();
    FUZZ_REQUIRE(loaded ||
                 (ZelManagerConfig::GetEnableConfig().empty() && ZelManagerConfig::GetIntNumbersConfig().empty()));
    for (const auto& [name, numbers] : ZelManagerConfig::GetIntNumbersConfig()) {
        for (int32_t number : numbers) {
            FUZZ_REQUIRE(number >= 0);
        }
    }
    return 0;
}
