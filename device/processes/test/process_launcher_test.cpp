#include "process_launcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace Tarvo::Emu {
void PrintTo(const ExitStatus& status, std::ostream* out)
{
    *out << status.Describe();
}

namespace {
namespace fs = std::filesystem;
const ExitStatus kSuccess{false, 0, 0};

struct Pipe {
    int fds[2] = {-1, -1};
    Pipe() { EXPECT_EQ(pipe2(fds, O_CLOEXEC), 0); }
    ~Pipe() { close(fds[0]), close(fds[1]); }
    int In() const { return fds[1]; }
    int Out() const { return fds[0]; }
    void CloseIn() { close(fds[1]), fds[1] = -1; }
    // Up to the end of the line, or of the file (every writer gone) when `stop` is 0.
    std::string Read(char stop = 0)
    {
        std::string text;
        char c = 0;
        while (read(fds[0], &c, 1) == 1 && (stop == 0 || c != stop)) {
            text += c;
        }
        return text;
    }
};

// How /proc shows a descriptor of this pipe.
std::string PipeName(int fd)
{
    struct stat st {};
    fstat(fd, &st);
    return "pipe:[" + std::to_string(st.st_ino) + "]";
}

LaunchPlan Shell(const std::string& script, std::vector<std::pair<int, int>> fds = {})
{
    return LaunchPlan{"/bin/sh", {"sh", "-c", script}, {}, std::move(fds), nullptr};
}

LaunchPlan Program(const std::string& path)
{
    return LaunchPlan{path, {}, {}, {}, nullptr};
}

// Ignores SIGTERM, says so on fd 3, then waits on its stdin.
LaunchPlan Stubborn(Pipe& input, Pipe& ready)
{
    return Shell("trap '' TERM; echo ready >&3; read line", {{0, input.Out()}, {3, ready.In()}});
}

std::unique_ptr<ChildProcess> StartOrFail(const LaunchPlan& plan)
{
    std::string error;
    auto child = ProcessLauncher::Start(plan, &error);
    EXPECT_NE(child, nullptr) << error;
    return child;
}

TEST(ProcessLauncherTest, ChildIsRegisteredBeforeItRunsAnything)
{
    const std::string file = fs::temp_directory_path().string() + "/launcher_registered_" + std::to_string(getpid());
    LaunchPlan plan = Shell("test \"$(cat " + file + ")\" = \"$$\"");
    pid_t registered = 0;
    plan.registerChild = [&](pid_t pid) {
        std::ofstream(file) << (registered = pid);
        return true;
    };
    auto child = StartOrFail(plan);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Wait(), kSuccess);
    EXPECT_EQ(registered, child->Pid());
    fs::remove(file);
}

TEST(ProcessLauncherTest, ExitCodesAndSignalsAreReported)
{
    const struct {
        const char* script;
        ExitStatus status;
        const char* text;
    } cases[] = {
        {"exit 0", kSuccess, "exit 0"},
        {"exit 3", {false, 3, 0}, "exit 3"},
        {"kill -KILL $$", {true, 0, SIGKILL}, "killed by SIGKILL"},
        {"kill -SEGV $$", {true, 0, SIGSEGV}, "killed by SIGSEGV"},
    };
    for (const auto& c : cases) {
        auto child = StartOrFail(Shell(c.script));
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(child->Wait(), c.status) << c.script;
        EXPECT_EQ(child->Poll()->Describe(), c.text) << "a reaped child keeps its status";
        EXPECT_FALSE(child->Kill(SIGKILL)) << "no signal once reaped";
    }
}

TEST(ProcessLauncherTest, RunningChildIsPolledWithoutWaitingAndKilled)
{
    Pipe input;
    auto child = StartOrFail(Shell("read line", {{0, input.Out()}}));
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Poll(), std::nullopt);

    EXPECT_TRUE(child->Kill(SIGKILL));
    pollfd ended{child->ExitFd(), POLLIN, 0};
    ASSERT_GE(ended.fd, 0);
    EXPECT_EQ(poll(&ended, 1, -1), 1);
    EXPECT_EQ(child->Poll(), (ExitStatus{true, 0, SIGKILL}));
}

TEST(ProcessLauncherTest, ChildThatCannotStartIsReportedAndReaped)
{
    const std::string plain = fs::temp_directory_path().string() + "/launcher_plain_" + std::to_string(getpid());
    std::ofstream(plain) << "not a program";
    chmod(plain.c_str(), 0600);
    Pipe output;
    LaunchPlan refused = Shell("echo ran >&3", {{3, output.In()}});
    refused.registerChild = [](pid_t) { return false; };
    LaunchPlan diedFirst = Shell("");
    diedFirst.registerChild = [](pid_t pid) {
        siginfo_t info{};
        return kill(pid, SIGKILL) == 0 && waitid(P_PID, pid, &info, WEXITED | WNOWAIT) == 0;
    };
    LaunchPlan badEnvironment = Shell("");
    badEnvironment.env = {"=x"};
    const struct {
        LaunchPlan plan;
        std::string error;
    } cases[] = {
        {Program("/nonexistent/zel_program"), "cannot start /nonexistent/zel_program: No such file or directory"},
        {Program(plain), "cannot start " + plain + ": Permission denied"},
        {refused, "cannot start /bin/sh: registration refused"},
        {diedFirst, "cannot start /bin/sh: Broken pipe"},
        {badEnvironment, "cannot start /bin/sh: bad environment entry \"=x\""},
        {Shell("", {{10, 1}}), "cannot start /bin/sh: bad descriptor 10 <- 1"},
        {Shell("", {{3, 1}, {3, 2}}), "cannot start /bin/sh: bad descriptor 3 <- 2"},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_EQ(ProcessLauncher::Start(c.plan, &error), nullptr);
        EXPECT_EQ(error, c.error);
    }
    fs::remove(plain);
    output.CloseIn();
    EXPECT_EQ(output.Read(), "") << "a refused child never runs";
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child left unreaped";
}

TEST(ProcessLauncherTest, ChildGetsItsArgumentsEnvironmentAndOnlyTheGivenDescriptors)
{
    setenv("ZEL_LAUNCH_A", "old", 1);
    Pipe output;
    Pipe stray;  // inheritable in the parent, but not given
    fcntl(stray.In(), F_SETFD, 0);
    LaunchPlan plan = Shell(
        "echo \"$0 $ZEL_LAUNCH_A $ZEL_LAUNCH_B\" >&3; for f in /proc/$$/fd/*; do readlink $f; done >&3 2>/dev/null; "
        "exit 0",
        {{3, output.In()}});
    plan.argv.push_back("name0");
    plan.env = {"ZEL_LAUNCH_A=new", "ZEL_LAUNCH_B=b"};
    auto child = StartOrFail(plan);
    ASSERT_NE(child, nullptr);
    output.CloseIn();
    const std::string seen = output.Read();
    EXPECT_EQ(seen.substr(0, seen.find('\n')), "name0 new b");
    EXPECT_NE(seen.find(PipeName(output.Out())), std::string::npos) << seen;
    EXPECT_EQ(seen.find(PipeName(stray.Out())), std::string::npos) << seen;
    EXPECT_EQ(child->Wait(), kSuccess);
}

TEST(ProcessLauncherTest, TerminateEscalatesToSigkillAfterTheGrace)
{
    Pipe input;
    auto polite = StartOrFail(Shell("read line", {{0, input.Out()}}));
    ASSERT_NE(polite, nullptr);
    EXPECT_EQ(polite->Terminate(std::chrono::seconds(10)).Describe(), "killed by SIGTERM");

    Pipe ready;
    auto stubborn = StartOrFail(Stubborn(input, ready));
    ASSERT_NE(stubborn, nullptr);
    ASSERT_EQ(ready.Read('\n'), "ready");
    EXPECT_EQ(stubborn->Terminate(std::chrono::milliseconds(20)).Describe(), "killed by SIGKILL");
}

TEST(ProcessLauncherTest, ChildrenStillRunningAreStoppedWhenTheParentExits)
{
    Pipe input;
    Pipe ready;
    Pipe alive;  // written only by the grandchild (and the parent until it exits)
    const pid_t parent = fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        ProcessLauncher::SetStopGrace(std::chrono::milliseconds(20));
        LaunchPlan plan = Stubborn(input, ready);
        plan.fds.push_back({4, alive.In()});
        std::string error;
        // Out of reach of any destructor: only the exit handling can stop it.
        static ChildProcess* running = ProcessLauncher::Start(plan, &error).release();
        if (running == nullptr || ready.Read('\n') != "ready") {
            _exit(2);
        }
        exit(0);
    }
    alive.CloseIn();
    ready.CloseIn();
    int status = 0;
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(alive.Read(), "") << "end of file: the grandchild is gone";
}

}  // namespace
}  // namespace Tarvo::Emu
