#include "program_files.h"

#include <filesystem>

namespace Tarvo::Emu {

namespace fs = std::filesystem;

ProgramFiles ProgramFilesOf(const std::string& executable)
{
    const fs::path bin = fs::path(executable).parent_path();
    const fs::path data = bin / ZEL_DATA_FROM_BIN;
    return ProgramFiles{
        (bin / ZEL_LIB_FROM_BIN / ZEL_SERVICE_LIBRARY_NAME).lexically_normal().string(),
        (data / "zel_manager_config.xml").lexically_normal().string(),
        (data / "zel_manager_config.xsd").lexically_normal().string(),
    };
}

std::string RunningExecutable()
{
    std::error_code failed;
    return fs::read_symlink("/proc/self/exe", failed).string();
}

const ProgramFiles& OwnProgramFiles()
{
    // The executable does not move while it runs.
    static const ProgramFiles files = ProgramFilesOf(RunningExecutable());
    return files;
}

}  // namespace Tarvo::Emu
