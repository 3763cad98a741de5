#ifndef ZEL_DEVICE_CONTROL_CHANNEL_H
#define ZEL_DEVICE_CONTROL_CHANNEL_H

// One connection of a serving device's control socket (RUNDIR/control): newline-framed text.
//
// A client opens with one request line, `send` or `trace` or `trace -f`; after `send` come the
// scenario lines, one per line, and the client shuts its side for writing. The device answers
// with lines `1 TEXT` (for the client's stdout) and `2 TEXT` (for its stderr), and ends with
// `exit N`, the client's exit status. Lines are at most kMaxLine bytes; a request at most
// kMaxLines lines. The peer is the device's own user (checked at accept).

#include <cstddef>
#include <optional>
#include <string>

namespace Tarvo::Emu {

class ControlChannel {
public:
    static constexpr size_t kMaxLine = 64 * 1024;
    static constexpr size_t kMaxLines = 1000;
    static constexpr const char* kSocketName = "control";

    explicit ControlChannel(int fd) : fd_(fd) {}
    ~ControlChannel();
    ControlChannel(const ControlChannel&) = delete;
    ControlChannel& operator=(const ControlChannel&) = delete;

    // A connected channel, or nothing with the reason.
    static std::optional<int> Connect(const std::string& path, std::string* error);
    // A listening socket at `path` (replacing a stale one), or -1 with the reason.
    static int Listen(const std::string& path, std::string* error);

    // The next line without its newline; nothing at the end, on an error, or when the line is too
    // long (`overlong` then says so).
    std::optional<std::string> ReadLine(bool* overlong = nullptr);
    bool WriteLine(const std::string& line);
    // No more writes from this side; the peer reads the end.
    void FinishWriting();
    int Fd() const { return fd_; }

private:
    bool Fill();

    int fd_;
    std::string buffer_;
    size_t start_ = 0;
    bool ended_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CONTROL_CHANNEL_H
