#include "crash_reporter.h"

#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <initializer_list>

namespace Tarvo::Emu {
namespace {

void WriteAll(const char* text)
{
    size_t length = strlen(text);
    while (length > 0) {
        ssize_t written = write(STDERR_FILENO, text, length);
        if (written <= 0) {
            return;
        }
        text += written;
        length -= static_cast<size_t>(written);
    }
}

// Async-signal-safe: only write and _exit.
void OnFatalSignal(int signal)
{
    WriteAll("zel_device: the device or the service crashed (");
    WriteAll(sigabbrev_np(signal) != nullptr ? sigabbrev_np(signal) : "signal");
    WriteAll(")\n");
    _exit(1);
}

}  // namespace

void InstallCrashReporter()
{
    struct sigaction action {};
    action.sa_handler = OnFatalSignal;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace Tarvo::Emu
