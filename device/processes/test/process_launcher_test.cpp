#include "process_launcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
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

struct Pipe {
    int read = -1;
    int write = -1;
    Pipe()
    {
        int fds[2];
        EXPECT_EQ(pipe2(fds, O_CLOEXEC), 0);
        read = fds[0];
        write = fds[1];
    }
    ~Pipe()
    {
        CloseRead();
        CloseWrite();
    }
    void CloseRead() { Close(read); }
    void CloseWrite() { Close(write); }
    static void Close(int& fd)
    {
        if (fd >= 0) {
            close(fd);
        }
        fd = -1;
    }
    // Everything up to end of file (every writer gone).
    std::string ReadAll()
    {
        std::string text;
        char buffer[256];
        ssize_t n = 0;
        while ((n = ::read(read, buffer, sizeof(buffer))) > 0) {
            text.append(buffer, n);
        }
        return text;
    }
    std::string ReadLine()
    {
        std::string line;
        char c = 0;
        while (::read(read, &c, 1) == 1 && c != '\n') {
            line += c;
        }
        return line;
    }
};

// How /proc shows a descriptor of this pipe.
std::string PipeName(int fd)
{
    struct stat st {};
    fstat(fd, &st);
    return "pipe:[" + std::to_string(st.st_ino) + "]";
}

LaunchSpec Shell(const std::string& script)
{
    LaunchSpec spec;
    spec.path = "/bin/sh";
    spec.argv = {"sh", "-c", script};
    return spec;
}

std::unique_ptr<ChildProcess> StartOrFail(const LaunchSpec& spec)
{
    std::string error;
    auto child = ProcessLauncher::Start(spec, &error);
    EXPECT_NE(child, nullptr) << error;
    return child;
}

TEST(ProcessLauncherTest, ChildIsRegisteredBeforeItRunsAnything)
{
    const std::string file = fs::temp_directory_path().string() + "/launcher_registered_" + std::to_string(getpid());
    LaunchSpec spec = Shell("test \"$(cat " + file + ")\" = \"$$\"");
    pid_t registered = 0;
    spec.registerChild = [&](pid_t pid) {
        registered = pid;
        std::ofstream(file) << pid;
        return true;
    };
    auto child = StartOrFail(spec);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Wait(), (ExitStatus{false, 0, 0}));
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
        {"exit 0", {false, 0, 0}, "exit 0"},
        {"exit 3", {false, 3, 0}, "exit 3"},
        {"kill -KILL $$", {true, 0, SIGKILL}, "killed by SIGKILL"},
        {"kill -SEGV $$", {true, 0, SIGSEGV}, "killed by SIGSEGV"},
    };
    for (const auto& c : cases) {
        auto child = StartOrFail(Shell(c.script));
        ASSERT_NE(child, nullptr);
        const ExitStatus status = child->Wait();
        EXPECT_EQ(status, c.status) << c.script;
        EXPECT_EQ(status.Describe(), c.text);
        EXPECT_EQ(child->Poll(), c.status) << "a reaped child keeps its status";
        EXPECT_FALSE(child->Kill(SIGKILL)) << "no signal once reaped";
    }
}

TEST(ProcessLauncherTest, RunningChildIsPolledWithoutWaitingAndKilled)
{
    Pipe input;
    LaunchSpec spec = Shell("read line");
    spec.fds = {{0, input.read}};
    auto child = StartOrFail(spec);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Poll(), std::nullopt);

    EXPECT_TRUE(child->Kill(SIGKILL));
    pollfd ended{child->ExitFd(), POLLIN, 0};
    ASSERT_GE(ended.fd, 0);
    EXPECT_EQ(poll(&ended, 1, -1), 1);
    EXPECT_EQ(child->Poll(), (ExitStatus{true, 0, SIGKILL}));
}

TEST(ProcessLauncherTest, ProgramThatCannotBeExecutedIsReported)
{
    const std::string plain = fs::temp_directory_path().string() + "/launcher_plain_" + std::to_string(getpid());
    std::ofstream(plain) << "not a program";
    chmod(plain.c_str(), 0600);
    const struct {
        std::string path;
        std::string error;
    } cases[] = {
        {"/nonexistent/zel_program", "cannot start /nonexistent/zel_program: No such file or directory"},
        {plain, "cannot start " + plain + ": Permission denied"},
    };
    for (const auto& c : cases) {
        LaunchSpec spec;
        spec.path = c.path;
        std::string error;
        EXPECT_EQ(ProcessLauncher::Start(spec, &error), nullptr);
        EXPECT_EQ(error, c.error);
    }
    fs::remove(plain);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child left unreaped";
}

TEST(ProcessLauncherTest, RefusedRegistrationStopsTheChildBeforeItRuns)
{
    Pipe output;
    LaunchSpec spec = Shell("echo ran >&3");
    spec.fds = {{3, output.write}};
    spec.registerChild = [](pid_t) { return false; };
    std::string error;
    EXPECT_EQ(ProcessLauncher::Start(spec, &error), nullptr);
    EXPECT_EQ(error, "cannot start /bin/sh: registration refused");
    output.CloseWrite();
    EXPECT_EQ(output.ReadAll(), "");
}

TEST(ProcessLauncherTest, ChildGetsItsArgumentsEnvironmentAndOnlyTheGivenDescriptors)
{
    setenv("ZEL_LAUNCH_A", "old", 1);
    Pipe output;
    Pipe stray;  // open in the parent, not given
    fcntl(stray.write, F_SETFD, 0);
    LaunchSpec spec = Shell(
        "echo \"$0 $ZEL_LAUNCH_A $ZEL_LAUNCH_B\" >&3; for f in /proc/$$/fd/*; do readlink $f; done >&3 2>/dev/null; "
        "exit 0");
    spec.argv.push_back("name0");
    spec.env = {"ZEL_LAUNCH_A=new", "ZEL_LAUNCH_B=b"};
    spec.fds = {{3, output.write}};
    auto child = StartOrFail(spec);
    ASSERT_NE(child, nullptr);
    output.CloseWrite();
    stray.CloseWrite();
    const std::string seen = output.ReadAll();
    EXPECT_EQ(seen.substr(0, seen.find('\n')), "name0 new b");
    EXPECT_NE(seen.find(PipeName(output.read)), std::string::npos) << seen;
    EXPECT_EQ(seen.find(PipeName(stray.read)), std::string::npos) << seen;
    EXPECT_EQ(child->Wait(), (ExitStatus{false, 0, 0}));

    std::string error;
    spec.env = {"=x"};
    EXPECT_EQ(ProcessLauncher::Start(spec, &error), nullptr);
    EXPECT_EQ(error, "cannot start /bin/sh: bad environment entry \"=x\"");
    spec.env.clear();
    spec.fds = {{LaunchSpec::kMaxChildFd + 1, output.read}};
    EXPECT_EQ(ProcessLauncher::Start(spec, &error), nullptr);
    EXPECT_EQ(error, "cannot start /bin/sh: bad descriptor 10 <- " + std::to_string(output.read));
}

// A child that ignores SIGTERM and says so on fd 3, then waits on its stdin.
LaunchSpec Stubborn(Pipe& input, Pipe& ready)
{
    LaunchSpec spec = Shell("trap '' TERM; echo ready >&3; read line");
    spec.fds = {{0, input.read}, {3, ready.write}};
    return spec;
}

TEST(ProcessLauncherTest, TerminateEscalatesToSigkillAfterTheGrace)
{
    Pipe input;
    LaunchSpec politeSpec = Shell("read line");
    politeSpec.fds = {{0, input.read}};
    auto polite = StartOrFail(politeSpec);
    ASSERT_NE(polite, nullptr);
    EXPECT_EQ(polite->Terminate(std::chrono::seconds(10)).Describe(), "killed by SIGTERM");

    Pipe ready;
    auto stubborn = StartOrFail(Stubborn(input, ready));
    ASSERT_NE(stubborn, nullptr);
    ASSERT_EQ(ready.ReadLine(), "ready");
    EXPECT_EQ(stubborn->Terminate(std::chrono::milliseconds(20)).Describe(), "killed by SIGKILL");
}

TEST(ProcessLauncherTest, ChildrenStillRunningAreStoppedWhenTheParentExits)
{
    Pipe input;
    Pipe ready;
    Pipe alive;  // its write end lives only in the grandchild (and the parent until it exits)
    const pid_t parent = fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        ProcessLauncher::SetStopGrace(std::chrono::milliseconds(20));
        LaunchSpec spec = Stubborn(input, ready);
        spec.fds.push_back({4, alive.write});
        std::string error;
        // Kept from any destructor, so only the exit handling can stop it.
        static ChildProcess* running = ProcessLauncher::Start(spec, &error).release();
        if (running == nullptr || ready.ReadLine() != "ready") {
            _exit(2);
        }
        exit(0);  // the exit handling stops what is still running
    }
    alive.CloseWrite();
    ready.CloseWrite();
    int status = 0;
    ASSERT_EQ(waitpid(parent, &status, 0), parent);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(alive.ReadAll(), "") << "end of file: the grandchild is gone";
}

}  // namespace
}  // namespace Tarvo::Emu
