#include "serving_device.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "input_text.h"
#include "scenario_parser.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {
constexpr auto kFollowTick = std::chrono::milliseconds(200);

bool HasTime(const std::string& line)
{
    size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos) {
        return false;
    }
    char first = line[start];
    return first == '+' || (first >= '0' && first <= '9');
}

bool IsOwnUser(int fd)
{
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

const TraceValue* LineOf(const TraceEvent& event)
{
    return event.ev == "ipc.done" || event.ev == "ipc.unsent" || event.ev == "dump" ? event.Find("line") : nullptr;
}
}  // namespace

ServingDevice::ServingDevice(DeviceControl& device, std::chrono::milliseconds quietLimit)
    : device_(device), quietLimit_(quietLimit), executor_(device)
{
    if (pipe2(wake_, O_CLOEXEC) != 0) {
        wake_[0] = wake_[1] = -1;
    }
}

ServingDevice::~ServingDevice()
{
    Stop();
    ReapClients(true);
    for (int fd : wake_) {
        if (fd >= 0) {
            close(fd);
        }
    }
}

void ServingDevice::Stop()
{
    if (!stopping_.exchange(true) && wake_[1] >= 0) {
        char byte = 1;
        ssize_t wrote = write(wake_[1], &byte, 1);
        (void)wrote;
    }
}

bool ServingDevice::Listen(const std::string& socketPath, std::string* error)
{
    if (wake_[0] < 0) {
        *error = "no wake-up pipe could be made";
        return false;
    }
    listener_ = ControlChannel::Listen(socketPath, error);
    socketPath_ = socketPath;
    return listener_ >= 0;
}

void ServingDevice::Serve()
{
    const int listener = listener_;
    while (listener >= 0 && !stopping_) {
        pollfd fds[2] = {{listener, POLLIN, 0}, {wake_[0], POLLIN, 0}};
        if (poll(fds, 2, -1) < 0 && errno != EINTR) {
            break;
        }
        if ((fds[0].revents & POLLIN) == 0) {
            continue;
        }
        int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) {
            continue;
        }
        if (!IsOwnUser(fd)) {
            close(fd);
            continue;
        }
        ReapClients(false);
        auto done = std::make_shared<std::atomic<bool>>(false);
        std::lock_guard<std::mutex> lock(clientsMutex_);
        clients_.push_back({std::thread([this, fd, done] {
                                Answer(fd);
                                *done = true;
                            }),
                            done});
    }
    if (listener >= 0) {
        close(listener);
        unlink(socketPath_.c_str());
        listener_ = -1;
    }
    ReapClients(true);
}

void ServingDevice::ReapClients(bool all)
{
    std::vector<Client> finished;
    {
        std::lock_guard<std::mutex> lock(clientsMutex_);
        auto split = std::stable_partition(clients_.begin(), clients_.end(),
                                           [all](const Client& client) { return !all && !*client.done; });
        std::move(split, clients_.end(), std::back_inserter(finished));
        clients_.erase(split, clients_.end());
    }
    for (Client& client : finished) {
        client.thread.join();
    }
}

void ServingDevice::Answer(int fd)
{
    ControlChannel channel(fd);
    std::optional<std::string> request = channel.ReadLine();
    int status = 2;
    if (request == "send") {
        status = AnswerSend(channel);
    } else if (request == "trace" || request == "trace -f") {
        AnswerTrace(channel, *request == "trace -f");
        status = 0;
    } else if (request && request->starts_with("adopt ")) {
        status = AnswerAdopt(fd, request->substr(6), channel);
    } else {
        channel.WriteLine("2 zel_device: unknown control request '" + Shown(request.value_or("")) + "'");
    }
    channel.WriteLine("exit " + std::to_string(status));
}

int ServingDevice::AnswerAdopt(int fd, const std::string& caller, ControlChannel& channel)
{
    ucred peer{};
    socklen_t size = sizeof(peer);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        channel.WriteLine("2 zel_device: the client's process is unknown");
        return 1;
    }
    CallerSpec wanted{CallerSpec::Kind::BUNDLE, caller};
    const std::map<std::string, CallerSpec::Kind> kinds = {
        {"system", CallerSpec::Kind::SYSTEM}, {"native", CallerSpec::Kind::NATIVE}, {"shell", CallerSpec::Kind::SHELL}};
    if (auto kind = kinds.find(caller); kind != kinds.end()) {
        wanted = {kind->second, ""};
    }
    ProcessIdentity given;
    std::string error;
    std::lock_guard<std::mutex> lock(playMutex_);
    if (!device_.AdoptProcess(peer.pid, wanted, &given, &error)) {
        channel.WriteLine("2 zel_device: cannot adopt pid " + std::to_string(peer.pid) + ": " + error);
        return 1;
    }
    channel.WriteLine("1 " + std::to_string(given.pid));
    return 0;
}

int ServingDevice::AnswerSend(ControlChannel& channel)
{
    std::vector<std::string> lines;
    bool overlong = false;
    while (std::optional<std::string> line = channel.ReadLine(&overlong)) {
        if (lines.size() == ControlChannel::kMaxLines) {
            channel.WriteLine("2 zel_device: at most " + std::to_string(ControlChannel::kMaxLines) +
                              " lines at a time");
            return 2;
        }
        lines.push_back(std::move(*line));
    }
    if (overlong) {
        channel.WriteLine("2 zel_device: a line is longer than " + std::to_string(ControlChannel::kMaxLine) + " bytes");
        return 2;
    }
    std::lock_guard<std::mutex> lock(playMutex_);
    Scenario scenario;
    if (!Parse(lines, &scenario, channel)) {
        return 2;
    }
    return Play(scenario, channel);
}

bool ServingDevice::Parse(const std::vector<std::string>& lines, Scenario* parsed, ControlChannel& channel)
{
    // What came before: the device has booted, and these packages are installed.
    std::string prefix = "boot\n";
    for (const auto& [bundle, install] : installed_) {
        prefix += install + "\n";
    }
    const int before = static_cast<int>(std::count(prefix.begin(), prefix.end(), '\n'));
    std::string text = prefix;
    bool ok = true;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (HasTime(lines[i])) {
            channel.WriteLine("2 line " + std::to_string(i + 1) + ": a sent line takes no TIME: " + Shown(lines[i]));
            ok = false;
        }
        text += lines[i] + "\n";
    }
    ParseResult result = ScenarioParser::Parse(text, "send", ".");
    for (const std::string& message : result.errors) {
        // "send:N: message", N counted from the start of the text.
        int number = std::atoi(message.c_str() + 5);
        size_t colon = message.find(": ");
        channel.WriteLine("2 line " + std::to_string(number - before) + ": " +
                          (colon == std::string::npos ? message : message.substr(colon + 2)));
        ok = false;
    }
    for (ScenarioLine& line : result.scenario.lines) {
        if (line.line <= before) {
            continue;
        }
        if (std::holds_alternative<Cmd::End>(line.command)) {
            channel.WriteLine("2 line " + std::to_string(line.line - before) + ": a serving device has no end");
            ok = false;
        }
        parsed->lines.push_back(std::move(line));
    }
    return ok;
}

int ServingDevice::Play(const Scenario& scenario, ControlChannel& channel)
{
    int status = 0;
    Trace& trace = device_.GetTrace();
    for (const ScenarioLine& line : scenario.lines) {
        if (const auto* expect = std::get_if<Cmd::Expect>(&line.command)) {
            status = CheckExpect(*expect, channel) ? status : 3;
            continue;
        }
        const int number = nextLine_++;
        const size_t from = trace.Size();
        std::string error;
        if (!executor_.Run(number, line.command, &error)) {
            channel.WriteLine("2 zel_device: " + Shown(line.text) + ": " + error);
            return 1;
        }
        if (!device_.WaitQuiet(quietLimit_)) {
            channel.WriteLine("2 zel_device: the device did not become quiet after " + Shown(line.text));
            return 1;
        }
        RememberPackages(line);
        for (const TraceEvent& event : trace.EventsSince(from)) {
            const TraceValue* tagged = LineOf(event);
            if (tagged != nullptr && *tagged == TraceValue{int64_t{number}}) {
                channel.WriteLine("1 " + event.Json());
            }
        }
    }
    return status;
}

void ServingDevice::RememberPackages(const ScenarioLine& line)
{
    if (const auto* install = std::get_if<Cmd::Install>(&line.command)) {
        installed_[install->package.bundle] = line.text;
    } else if (const auto* remove = std::get_if<Cmd::Remove>(&line.command)) {
        installed_.erase(remove->bundle);
    }
}

bool ServingDevice::CheckExpect(const Cmd::Expect& expect, ControlChannel& channel)
{
    const ExpectChecker::Result result = checker_.Check(expect, device_.GetTrace());
    channel.WriteLine(result.ok ? "1 expect held" : "2 expect failed");
    for (const TraceEvent* seen : result.seen) {
        channel.WriteLine("2     " + seen->Json());
    }
    return result.ok;
}

void ServingDevice::AnswerTrace(ControlChannel& channel, bool follow)
{
    const Trace& trace = device_.GetTrace();
    size_t sent = 0;
    for (;;) {
        for (const TraceEvent& event : trace.EventsSince(sent)) {
            if (!channel.WriteLine("1 " + event.Json())) {
                return;
            }
            ++sent;
        }
        if (!follow || stopping_) {
            return;
        }
        // Ticks so that a stop or a reader that went is noticed.
        trace.WaitBeyond(sent, kFollowTick);
        // The reader shut its writing side after the request; a hang-up means it closed altogether.
        pollfd gone = {channel.Fd(), 0, 0};
        if (poll(&gone, 1, 0) > 0 && (gone.revents & (POLLHUP | POLLERR)) != 0) {
            return;
        }
    }
}

}  // namespace Tarvo::Emu
