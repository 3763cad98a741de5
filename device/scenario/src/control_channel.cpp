#include "control_channel.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Tarvo::Emu {
namespace {
bool Address(const std::string& path, sockaddr_un* address, std::string* error)
{
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) {
        *error = "the socket path is too long: " + path;
        return false;
    }
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::string Reason(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}
}  // namespace

ControlChannel::~ControlChannel()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

std::optional<int> ControlChannel::Connect(const std::string& path, std::string* error)
{
    sockaddr_un address;
    if (!Address(path, &address, error)) {
        return std::nullopt;
    }
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        *error = Reason("socket");
        return std::nullopt;
    }
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        *error = Reason("no device is serving at " + path);
        close(fd);
        return std::nullopt;
    }
    return fd;
}

int ControlChannel::Listen(const std::string& path, std::string* error)
{
    sockaddr_un address;
    if (!Address(path, &address, error)) {
        return -1;
    }
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        *error = Reason("socket");
        return -1;
    }
    // The run folder is ours (locked), so a socket file left in it is a dead device's.
    unlink(path.c_str());
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || listen(fd, 16) != 0) {
        *error = Reason("cannot listen at " + path);
        close(fd);
        return -1;
    }
    return fd;
}

bool ControlChannel::Fill()
{
    char chunk[4096];
    for (;;) {
        ssize_t got = read(fd_, chunk, sizeof(chunk));
        if (got > 0) {
            buffer_.append(chunk, static_cast<size_t>(got));
            return true;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        ended_ = true;
        return false;
    }
}

std::optional<std::string> ControlChannel::ReadLine(bool* overlong)
{
    if (overlong != nullptr) {
        *overlong = false;
    }
    for (;;) {
        size_t newline = buffer_.find('\n', start_);
        if (newline != std::string::npos && newline - start_ > kMaxLine) {
            if (overlong != nullptr) {
                *overlong = true;
            }
            return std::nullopt;
        }
        if (newline != std::string::npos) {
            std::string line = buffer_.substr(start_, newline - start_);
            start_ = newline + 1;
            if (start_ > kMaxLine) {
                buffer_.erase(0, start_);
                start_ = 0;
            }
            return line;
        }
        if (buffer_.size() - start_ > kMaxLine) {
            if (overlong != nullptr) {
                *overlong = true;
            }
            return std::nullopt;
        }
        if (ended_ || !Fill()) {
            return std::nullopt;
        }
    }
}

bool ControlChannel::WriteLine(const std::string& line)
{
    std::string framed = line + '\n';
    size_t done = 0;
    while (done < framed.size()) {
        ssize_t wrote = send(fd_, framed.data() + done, framed.size() - done, MSG_NOSIGNAL);
        if (wrote < 0 && errno == EINTR) {
            continue;
        }
        if (wrote <= 0) {
            return false;
        }
        done += static_cast<size_t>(wrote);
    }
    return true;
}

void ControlChannel::FinishWriting()
{
    shutdown(fd_, SHUT_WR);
}

}  // namespace Tarvo::Emu
