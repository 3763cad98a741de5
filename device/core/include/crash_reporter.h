#ifndef ZEL_DEVICE_CRASH_REPORTER_H
#define ZEL_DEVICE_CRASH_REPORTER_H

namespace Tarvo::Emu {

// The service runs inside the device's process, so its crash is the device's: report fatal
// signals as a crash on stderr and exit with status 1 instead of dying silently.
void InstallCrashReporter();

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CRASH_REPORTER_H
