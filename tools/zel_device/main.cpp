// zel_device: boots the emulated device, runs the service and plays a scenario (see
// zel_device_app.h for what it does and its exit status).

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>

#include "device_factory.h"
#include "device_process.h"
#include "interrupt_cleanup.h"
#include "zel_device_app.h"

namespace {
#if defined(__SANITIZE_ADDRESS__)
constexpr bool SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer)
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif
#else
constexpr bool SANITIZED = false;
#endif

void Say(const char* text)
{
    // Only async-signal-safe calls here: this runs in a crashed process.
    ssize_t written = write(STDERR_FILENO, text, strlen(text));
    (void)written;
}

void OnCrash(int signal)
{
    Say("zel_device: the device or the service crashed (");
    Say(sigabbrev_np(signal) != nullptr ? sigabbrev_np(signal) : "signal");
    Say("); the run stopped\n");
    _exit(Tarvo::Emu::ZelDeviceApp::EXIT_DEVICE_FAILED);
}

// A crash anywhere in the device is reported as such and never ends in a silent exit 0. Under the
// sanitizers their own reports are worth more, so they keep the signals.
void CatchCrashes()
{
    std::set_terminate([] {
        Say("zel_device: an uncaught exception ended the run\n");
        _exit(Tarvo::Emu::ZelDeviceApp::EXIT_DEVICE_FAILED);
    });
    if (SANITIZED) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = OnCrash;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        sigaction(signal, &action, nullptr);
    }
}
}  // namespace

int main(int argc, char** argv)
{
    // First, while this is the only thread: every later thread inherits the blocked signals.
    Tarvo::Emu::HandleInterrupts();
    CatchCrashes();
    if (argc > 1 && std::strcmp(argv[1], "process") == 0) {
        // One process of a device in real processes; its threads may be anywhere when it ends.
        const int status = Tarvo::Emu::RunDeviceProcess(std::vector<std::string>(argv + 2, argv + argc));
        std::fflush(nullptr);
        std::_Exit(status);
    }
    Tarvo::Emu::ZelDeviceApp app(&Tarvo::Emu::MakeDevice, std::cout, std::cerr);
    app.SetInterruptHook(&Tarvo::Emu::OnInterrupt);
    const int status = app.Main(std::vector<std::string>(argv + 1, argv + argc));
    if (app.DeviceAbandoned()) {
        // Its threads may be stuck: end here rather than wait for them in destructors.
        std::cout.flush();
        std::cerr.flush();
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}
