#include "interrupt_cleanup.h"

#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

#include "process_launcher.h"

namespace Tarvo::Emu {
namespace {
struct Folders {
    std::mutex mutex;
    std::set<std::string> dirs;
    // Held while `stop` runs, so that taking it away waits for a call under way.
    std::mutex calling;
    std::function<void(int)> stop;
};

// Never destroyed: the waiting thread may use it while the process exits.
Folders& Registered()
{
    static Folders* folders = new Folders();
    return *folders;
}

void RemoveRegistered()
{
    std::lock_guard<std::mutex> lock(Registered().mutex);
    for (const std::string& dir : Registered().dirs) {
        // A device thread may still be creating files in it: try again a few times.
        for (int attempt = 0; attempt < 3; ++attempt) {
            std::error_code ignored;
            std::filesystem::remove_all(dir, ignored);
            if (!std::filesystem::exists(dir, ignored)) {
                break;
            }
        }
    }
}

int NextSignal(const sigset_t& signals)
{
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
    return signal;
}

void WaitForInterrupt(sigset_t signals)
{
    int signal = NextSignal(signals);
    bool stopped = false;
    {
        std::lock_guard<std::mutex> call(Registered().calling);
        std::function<void(int)> stop;
        {
            std::lock_guard<std::mutex> lock(Registered().mutex);
            stop = Registered().stop;
        }
        if (stop) {
            stop(signal);
            stopped = true;
        }
    }
    if (stopped) {
        signal = NextSignal(signals);
    }
    // The device's processes go with it.
    ProcessLauncher::StopAll();
    RemoveRegistered();
    const char* name = sigabbrev_np(signal);
    const std::string message =
        std::string("zel_device: interrupted (SIG") + (name != nullptr ? name : "?") + "); the run stopped\n";
    ssize_t written = write(STDERR_FILENO, message.data(), message.size());
    (void)written;
    _exit(128 + signal);
}
}  // namespace

void HandleInterrupts()
{
    static std::once_flag started;
    std::call_once(started, [] {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        std::thread(WaitForInterrupt, signals).detach();
    });
}

void RemoveOnInterrupt(const std::string& dir)
{
    std::lock_guard<std::mutex> lock(Registered().mutex);
    Registered().dirs.insert(dir);
}

void KeepOnInterrupt(const std::string& dir)
{
    std::lock_guard<std::mutex> lock(Registered().mutex);
    Registered().dirs.erase(dir);
}

void OnInterrupt(std::function<void(int signal)> stop)
{
    std::lock_guard<std::mutex> call(Registered().calling);
    std::lock_guard<std::mutex> lock(Registered().mutex);
    Registered().stop = std::move(stop);
}

}  // namespace Tarvo::Emu
