#ifndef TARVO_UTILS_TEST_FORKED_CHILD_H
#define TARVO_UTILS_TEST_FORKED_CHILD_H

// Real processes for tests of what several processes share: forked from the test before it starts
// any thread, each talks to the test over a pair of pipes and leaves its story in a journal file
// (one line per event, appended whole, so the file's order is the order the events happened in).

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "shared_time_page.h"

// In a child: reports the failed condition on stderr and ends the child with status 1.
#define CHILD_REQUIRE(condition)                                                               \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "%s:%d: child failed: %s\n", __FILE__, __LINE__, #condition); \
            _exit(1);                                                                          \
        }                                                                                      \
    } while (false)

namespace Tarvo::Forked {

// One end of a two-way stream of numbers.
class Channel {
public:
    explicit Channel(int fd = -1) : fd_(fd) {}

    void Send(uint64_t value) const
    {
        CHILD_REQUIRE(write(fd_, &value, sizeof(value)) == static_cast<ssize_t>(sizeof(value)));
    }
    // Nothing once the other side has gone.
    std::optional<uint64_t> Receive() const
    {
        uint64_t value = 0;
        if (read(fd_, &value, sizeof(value)) != static_cast<ssize_t>(sizeof(value))) {
            return std::nullopt;
        }
        return value;
    }
    // Receive() for a child: the other side must answer.
    uint64_t Expect() const
    {
        auto value = Receive();
        CHILD_REQUIRE(value.has_value());
        return *value;
    }
    void Close() const { close(fd_); }

private:
    int fd_;
};

// Two channels joined to each other.
inline std::pair<Channel, Channel> ChannelPair()
{
    int fds[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
    return {Channel(fds[0]), Channel(fds[1])};
}

class ForkedChild {
public:
    // Forks; the child runs `body` with its end of the channel and exits with what it returns.
    explicit ForkedChild(const std::function<int(Channel& test)>& body)
    {
        auto [mine, theirs] = ChannelPair();
        const pid_t test = getpid();
        pid_ = fork();
        if (pid_ == 0) {
            // A test that times out must not leave its children behind.
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != test) {
                _exit(1);
            }
            mine.Close();
            _exit(body(theirs));
        }
        theirs.Close();
        channel_ = mine;
    }
    ~ForkedChild()
    {
        if (pid_ > 0 && !reaped_) {
            kill(pid_, SIGKILL);
            Wait();
        }
        channel_.Close();
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    pid_t Pid() const { return pid_; }
    const Channel& Talk() const { return channel_; }
    void Kill() const { kill(pid_, SIGKILL); }
    // The exit status, or 128 + the signal that ended it.
    int Wait()
    {
        int status = 0;
        reaped_ = waitpid(pid_, &status, 0) == pid_;
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    pid_t pid_ = -1;
    bool reaped_ = false;
    Channel channel_;
};

// A fresh folder under the test's temporary directory, removed with everything in it.
class TempFolder {
public:
    TempFolder()
    {
        std::string pattern = testing::TempDir() + "vt_XXXXXX";
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        path_ = pattern;
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Every participant is a forked child: the test process itself never attaches to the page it
// makes, so its tests stay apart from each other.
class SharedPageTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string reason;
        ASSERT_TRUE(SharedTimePage::Make(page_, reason)) << reason;
    }

    TempFolder folder_;
    const std::string page_ = folder_.File("time");
    const std::string journal_ = folder_.File("journal");
};

inline void Note(const std::string& journal, const std::string& line)
{
    const int fd = open(journal.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    const std::string text = line + "\n";
    CHILD_REQUIRE(fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    close(fd);
}

inline std::vector<std::string> Lines(const std::string& journal)
{
    std::vector<std::string> lines;
    std::ifstream in(journal);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace Tarvo::Forked

#endif  // TARVO_UTILS_TEST_FORKED_CHILD_H
