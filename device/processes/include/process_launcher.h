#ifndef ZEL_DEVICE_PROCESSES_PROCESS_LAUNCHER_H
#define ZEL_DEVICE_PROCESSES_PROCESS_LAUNCHER_H

// Starts the device's real processes. The parent registers a child (under its real pid) before the
// child runs anything of its own: the child waits on a pipe until then, and only then executes the
// program. A child is reaped by its own pid only, so other code's children are left alone.

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Tarvo::Emu {

struct ExitStatus {
    bool signaled = false;
    int code = 0;    // exit code when !signaled
    int signal = 0;  // the signal that ended it when signaled

    // "exit 3", "killed by SIGKILL"
    std::string Describe() const;
    bool operator==(const ExitStatus&) const = default;
};

struct LaunchPlan {
    // Highest file descriptor a child can be given (see fds).
    static constexpr int kMaxChildFd = 9;

    std::string path;
    // The whole argument vector, argv[0] included; {path} when empty.
    std::vector<std::string> argv;
    // "KEY=VALUE" added to (or replacing in) the parent's environment.
    std::vector<std::string> env;
    // {child fd, parent fd}: descriptors the child gets (0..kMaxChildFd); every other one is closed.
    std::vector<std::pair<int, int>> fds;
    // Runs in the parent once the child's real pid is known and before the child goes on; false
    // stops the start (the child is killed and reaped).
    std::function<bool(pid_t realPid)> registerChild;
};

// A started child. Destroying the handle of a child still running stops it (SIGTERM, then SIGKILL
// after the grace) and reaps it.
class ChildProcess {
public:
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Pid() const { return pid_; }
    // Readable once the child has ended (a pidfd, for poll/epoll); -1 if the kernel has none.
    int ExitFd() const { return exitFd_; }
    // False once the child has been reaped (the pid may belong to someone else by then).
    bool Kill(int signal);
    // The exit status if the child has ended (reaping it), without waiting.
    std::optional<ExitStatus> Poll();
    ExitStatus Wait();
    // SIGTERM, SIGKILL if it has not ended within `grace` (real time), reaped either way.
    ExitStatus Terminate(std::chrono::milliseconds grace);

private:
    friend class ProcessLauncher;
    ChildProcess(pid_t pid, int exitFd);
    std::optional<ExitStatus> Reap(bool block);
    bool WaitExited(std::chrono::milliseconds timeout);

    const pid_t pid_;
    const int exitFd_;
    std::mutex mutex_;
    std::optional<ExitStatus> status_;
};

class ProcessLauncher {
public:
    // The child, or null with "cannot start PATH: reason" (the program could not be executed, the
    // registration refused it, or the system refused a process).
    static std::unique_ptr<ChildProcess> Start(const LaunchPlan& plan, std::string* error);
    // Stops every child still running (SIGTERM, then SIGKILL after the grace) and reaps it. Runs at
    // exit; a process leaving otherwise (a signal's handler calling _exit) should call it first.
    static void StopAll();
    // The real-time grace StopAll and handle destruction give a child between SIGTERM and SIGKILL.
    static void SetStopGrace(std::chrono::milliseconds grace);

private:
    // Registers the forked child and lets it go on; false (child reaped) when it did not start.
    static bool Release(ChildProcess& child, const LaunchPlan& plan, int goFd, int reportFd, std::string* error);
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESSES_PROCESS_LAUNCHER_H
