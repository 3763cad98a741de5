#include "process_launcher.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <set>

extern char** environ;

namespace Tarvo::Emu {
namespace {
using Clock = std::chrono::steady_clock;

struct Children {
    std::mutex mutex;
    std::set<ChildProcess*> live;
    std::atomic<int64_t> graceMs{2000};
};

// Never destroyed: it is used at exit, after static objects may be gone.
Children& Registry()
{
    static Children* children = new Children();
    return *children;
}

// Everything the child needs, prepared before fork: after it only async-signal-safe calls are made.
struct ExecImage {
    std::string path;
    std::vector<std::string> argStore;
    std::vector<std::string> envStore;
    std::vector<char*> argv;
    std::vector<char*> envp;
    std::vector<std::pair<int, int>> fds;
    std::vector<int> moved;
};

std::string KeyOf(const std::string& entry)
{
    return entry.substr(0, entry.find('='));
}

bool CheckPlan(const LaunchPlan& plan, std::string* reason)
{
    for (const std::string& entry : plan.env) {
        if (entry.find('=') == std::string::npos || entry[0] == '=') {
            *reason = "bad environment entry \"" + entry + "\"";
            return false;
        }
    }
    std::set<int> targets;
    for (const auto& [childFd, parentFd] : plan.fds) {
        if (childFd < 0 || childFd > LaunchPlan::kMaxChildFd || parentFd < 0 || !targets.insert(childFd).second) {
            *reason = "bad descriptor " + std::to_string(childFd) + " <- " + std::to_string(parentFd);
            return false;
        }
    }
    return true;
}

void BuildImage(const LaunchPlan& plan, ExecImage* image)
{
    image->path = plan.path;
    image->argStore = plan.argv.empty() ? std::vector<std::string>{plan.path} : plan.argv;
    std::set<std::string> replaced;
    for (const std::string& entry : plan.env) {
        replaced.insert(KeyOf(entry));
    }
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (replaced.count(KeyOf(*entry)) == 0) {
            image->envStore.emplace_back(*entry);
        }
    }
    image->envStore.insert(image->envStore.end(), plan.env.begin(), plan.env.end());
    for (std::string& arg : image->argStore) {
        image->argv.push_back(arg.data());
    }
    image->argv.push_back(nullptr);
    for (std::string& entry : image->envStore) {
        image->envp.push_back(entry.data());
    }
    image->envp.push_back(nullptr);
    image->fds = plan.fds;
    image->moved.resize(plan.fds.size());
}

[[noreturn]] void FailChild(int reportFd)
{
    const int cause = errno;
    ssize_t written = write(reportFd, &cause, sizeof(cause));
    (void)written;
    _exit(127);
}

// The child's side, between fork and exec.
[[noreturn]] void RunChild(ExecImage& image, int goFd, int reportFd)
{
    char go = 0;
    ssize_t n = 0;
    do {
        n = read(goFd, &go, 1);
    } while (n < 0 && errno == EINTR);
    if (n != 1) {
        _exit(127);  // the parent gave up on this child
    }
    close(goFd);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // Everything above the given descriptors moves out of their way and closes at exec.
    const int low = LaunchPlan::kMaxChildFd + 1;
    const int moved = reportFd >= low ? reportFd : fcntl(reportFd, F_DUPFD_CLOEXEC, low);
    const int report = moved >= 0 ? moved : reportFd;
    for (size_t i = 0; i < image.fds.size(); ++i) {
        image.moved[i] = fcntl(image.fds[i].second, F_DUPFD_CLOEXEC, low);
        if (image.moved[i] < 0) {
            FailChild(report);
        }
    }
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    for (size_t i = 0; i < image.fds.size(); ++i) {
        if (dup2(image.moved[i], image.fds[i].first) < 0) {
            FailChild(report);
        }
    }
    execve(image.path.c_str(), image.argv.data(), image.envp.data());
    FailChild(report);
}
}  // namespace

std::string ExitStatus::Describe() const
{
    if (!signaled) {
        return "exit " + std::to_string(code);
    }
    const char* name = sigabbrev_np(signal);
    return std::string("killed by ") + (name != nullptr ? std::string("SIG") + name : std::to_string(signal));
}

ChildProcess::ChildProcess(pid_t pid, int exitFd) : pid_(pid), exitFd_(exitFd)
{
    Children& children = Registry();
    std::lock_guard<std::mutex> lock(children.mutex);
    children.live.insert(this);
}

ChildProcess::~ChildProcess()
{
    {
        // Also waits for a StopAll in progress, which may be using this child.
        Children& children = Registry();
        std::lock_guard<std::mutex> lock(children.mutex);
        children.live.erase(this);
    }
    Terminate(std::chrono::milliseconds(Registry().graceMs.load()));
    if (exitFd_ >= 0) {
        close(exitFd_);
    }
}

bool ChildProcess::Kill(int signal)
{
    // An unreaped child keeps its pid, so the signal cannot reach a stranger.
    std::lock_guard<std::mutex> lock(mutex_);
    return !status_ && kill(pid_, signal) == 0;
}

std::optional<ExitStatus> ChildProcess::Reap(bool block)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (status_) {
        return status_;
    }
    int raw = 0;
    pid_t result = 0;
    do {
        result = waitpid(pid_, &raw, block ? 0 : WNOHANG);
    } while (result < 0 && errno == EINTR);
    if (result == pid_) {
        status_ = WIFSIGNALED(raw) ? ExitStatus{true, 0, WTERMSIG(raw)} : ExitStatus{false, WEXITSTATUS(raw), 0};
    } else if (result < 0) {
        status_ = ExitStatus{false, -1, 0};  // reaped behind our back (SIGCHLD ignored): status lost
    }
    return status_;
}

std::optional<ExitStatus> ChildProcess::Poll()
{
    return Reap(false);
}

ExitStatus ChildProcess::Wait()
{
    // Wait without reaping and without the lock, so Kill stays usable (and safe) meanwhile.
    siginfo_t info{};
    while (waitid(P_PID, pid_, &info, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    return *Reap(true);
}

bool ChildProcess::WaitExited(std::chrono::milliseconds timeout)
{
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (exitFd_ >= 0) {
            pollfd fd{exitFd_, POLLIN, 0};
            const int ready = poll(&fd, 1, static_cast<int>(std::max<int64_t>(0, left.count())));
            if (ready >= 0 || errno != EINTR) {
                return ready > 0;
            }
            continue;
        }
        siginfo_t info{};
        const bool ended = waitid(P_PID, pid_, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid != 0;
        if (ended || left.count() <= 0) {
            return ended;
        }
        const timespec step{0, 5'000'000};  // no pidfd (old kernel): look again shortly
        nanosleep(&step, nullptr);
    }
}

ExitStatus ChildProcess::Terminate(std::chrono::milliseconds grace)
{
    if (Kill(SIGTERM) && !WaitExited(grace)) {
        Kill(SIGKILL);
    }
    return Wait();
}

namespace {
// The errno the child reported before exiting 127, or 0 once it has executed the program.
int ReadChildFailure(int reportFd)
{
    int cause = 0;
    ssize_t n = 0;
    do {
        n = read(reportFd, &cause, sizeof(cause));
    } while (n < 0 && errno == EINTR);
    return n == static_cast<ssize_t>(sizeof(cause)) ? cause : 0;
}

// glibc's own declaration lacks C linkage in C++ on some releases: ask the kernel directly.
int OpenPidFd(pid_t pid)
{
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

void ClosePair(int fds[2])
{
    close(fds[0]);
    close(fds[1]);
}
}  // namespace

std::unique_ptr<ChildProcess> ProcessLauncher::Start(const LaunchPlan& plan, std::string* error)
{
    static std::once_flag atExit;
    std::call_once(atExit, [] { atexit(StopAll); });
    const std::string prefix = "cannot start " + plan.path + ": ";
    std::string reason;
    if (!CheckPlan(plan, &reason)) {
        *error = prefix + reason;
        return nullptr;
    }
    ExecImage image;
    BuildImage(plan, &image);
    int go[2] = {-1, -1};
    int report[2] = {-1, -1};
    // A socket for the go-ahead: sending to a child killed meanwhile must not raise SIGPIPE here.
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, go) != 0 || pipe2(report, O_CLOEXEC) != 0) {
        *error = prefix + strerror(errno);
        if (go[0] >= 0) {
            ClosePair(go);
        }
        return nullptr;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        RunChild(image, go[0], report[1]);
    }
    const int forkError = errno;
    close(go[0]);
    close(report[1]);
    if (pid < 0) {
        close(go[1]);
        close(report[0]);
        *error = prefix + strerror(forkError);
        return nullptr;
    }
    std::unique_ptr<ChildProcess> child(new ChildProcess(pid, OpenPidFd(pid)));
    if (!Release(*child, plan, go[1], report[0], error)) {
        return nullptr;
    }
    return child;
}

bool ProcessLauncher::Release(ChildProcess& child, const LaunchPlan& plan, int goFd, int reportFd, std::string* error)
{
    const std::string prefix = "cannot start " + plan.path + ": ";
    if (plan.registerChild && !plan.registerChild(child.Pid())) {
        close(goFd);
        close(reportFd);
        child.Kill(SIGKILL);
        child.Wait();
        *error = prefix + "registration refused";
        return false;
    }
    const char go = 'g';
    const bool sent = send(goFd, &go, 1, MSG_NOSIGNAL) == 1;
    close(goFd);
    const int failure = sent ? ReadChildFailure(reportFd) : EPIPE;
    close(reportFd);
    if (failure != 0) {
        child.Wait();
        *error = prefix + strerror(failure);
        return false;
    }
    return true;
}

void ProcessLauncher::StopAll()
{
    Children& children = Registry();
    std::lock_guard<std::mutex> lock(children.mutex);
    const auto deadline = Clock::now() + std::chrono::milliseconds(children.graceMs.load());
    // Every child gets SIGTERM first, so they all use the same grace at once.
    for (ChildProcess* child : children.live) {
        child->Kill(SIGTERM);
    }
    for (ChildProcess* child : children.live) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (!child->WaitExited(std::max(left, std::chrono::milliseconds(0)))) {
            child->Kill(SIGKILL);
        }
        child->Wait();
    }
}

void ProcessLauncher::SetStopGrace(std::chrono::milliseconds grace)
{
    Registry().graceMs.store(grace.count());
}

}  // namespace Tarvo::Emu
