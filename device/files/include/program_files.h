#ifndef ZEL_DEVICE_PROGRAM_FILES_H
#define ZEL_DEVICE_PROGRAM_FILES_H

#include <string>

namespace Tarvo::Emu {

// The files zel_device ships with. They are found from the running executable, never through a
// path fixed at build time: the build tree keeps the installed layout (bin/, lib/,
// share/zel_manager/), so the same relative lookup serves a build and any install prefix.
struct ProgramFiles {
    std::string serviceLibrary;  // what the service host loads
    std::string defaultConfig;   // the default product configuration
    std::string configSchema;    // its schema
};

// The files of an executable at EXECUTABLE (a full path).
ProgramFiles ProgramFilesOf(const std::string& executable);

// The running executable, from /proc/self/exe; empty when it cannot be read.
std::string RunningExecutable();

// The files of the running executable.
const ProgramFiles& OwnProgramFiles();

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROGRAM_FILES_H
