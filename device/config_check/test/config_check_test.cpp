#include "config_check.h"

#include <gtest/gtest.h>

#include <iostream>

namespace Tarvo::Emu {
namespace {
TEST(ConfigCheckTest, Print)
{
    for (const char* path : {ZEL_DEFAULT_CONFIG, ZEL_EXAMPLE_CONFIGS "/broken/cut_short.xml", ZEL_EXAMPLE_CONFIGS "/broken/doctype_entities.xml", ZEL_EXAMPLE_CONFIGS "/broken/doctype_system.xml", ZEL_EXAMPLE_CONFIGS "/broken/empty_root.xml", ZEL_EXAMPLE_CONFIGS "/broken/wrong_root.xml", ZEL_EXAMPLE_CONFIGS "/xml_version_1_1.xml", "/nonexistent"}) {
        ConfigCheck check = CheckConfigFile(path);
        std::cout << "== " << path << " loads=" << check.loads << "\n";
        for (const auto& f : check.findings) std::cout << FormatFinding(f) << "\n";
    }
}
}  // namespace
}  // namespace Tarvo::Emu
