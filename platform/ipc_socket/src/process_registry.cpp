#include "process_registry.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace Tarvo {
namespace {
constexpr std::string_view kHeader = "zel-registry 1";
// One header line and kMaxIdentities lines of at most kMaxLine bytes.
constexpr size_t kMaxLine = 256;
constexpr size_t kMaxFile = kHeader.size() + 1 + ProcessRegistry::kMaxIdentities * kMaxLine;
constexpr size_t kMaxName = 128;

bool NameIsValid(std::string_view name)
{
    if (name.size() > kMaxName) {
        return false;
    }
    for (char c : name) {
        if (c <= ' ' || c > '~') {
            return false;
        }
    }
    return true;
}

template <typename T>
bool ParseField(std::string_view& line, T& value)
{
    size_t end = line.find(' ');
    std::string_view field = line.substr(0, end);
    auto [rest, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || rest != field.data() + field.size() || field.empty()) {
        return false;
    }
    line = end == std::string_view::npos ? std::string_view() : line.substr(end + 1);
    return true;
}

// "<pid> <uid> <tokenId> <fullTokenId> <name>", the name possibly empty.
bool ParseLine(std::string_view line, ProcessIdentity& identity)
{
    if (line.size() > kMaxLine || !ParseField(line, identity.pid) || !ParseField(line, identity.uid) ||
        !ParseField(line, identity.tokenId) || !ParseField(line, identity.fullTokenId) || !NameIsValid(line)) {
        return false;
    }
    identity.name = std::string(line);
    return identity.pid > 0;
}

bool ReadBounded(const std::string& path, std::string& content)
{
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        return false;
    }
    content.resize(kMaxFile + 1);
    size_t total = 0;
    ssize_t got = 0;
    while (total < content.size() && (got = read(fd, content.data() + total, content.size() - total)) != 0) {
        if (got < 0 && errno != EINTR) {
            break;
        }
        total += got > 0 ? static_cast<size_t>(got) : 0;
    }
    close(fd);
    content.resize(total);
    return got >= 0 && total <= kMaxFile;
}

bool WriteAll(int fd, const std::string& text)
{
    size_t done = 0;
    while (done < text.size()) {
        ssize_t put = write(fd, text.data() + done, text.size() - done);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            return false;
        }
        done += static_cast<size_t>(put);
    }
    return true;
}

std::string Format(const std::vector<ProcessIdentity>& identities)
{
    std::string text(kHeader);
    text += '\n';
    for (const ProcessIdentity& identity : identities) {
        text += std::to_string(identity.pid) + ' ' + std::to_string(identity.uid) + ' ' +
                std::to_string(identity.tokenId) + ' ' + std::to_string(identity.fullTokenId) + ' ' + identity.name +
                '\n';
    }
    return text;
}
}  // namespace

ProcessRegistry::ProcessRegistry(std::string dir) : dir_(std::move(dir)) {}

bool ProcessRegistry::Register(pid_t realPid, const std::vector<ProcessIdentity>& identities, std::string* error)
{
    auto fail = [error](std::string reason) {
        if (error != nullptr) {
            *error = std::move(reason);
        }
        return false;
    };
    if (identities.empty() || identities.size() > kMaxIdentities) {
        return fail("between 1 and " + std::to_string(kMaxIdentities) + " identities expected");
    }
    for (const ProcessIdentity& identity : identities) {
        if (identity.pid <= 0 || !NameIsValid(identity.name)) {
            return fail("invalid identity for pid " + std::to_string(identity.pid));
        }
    }
    std::string path = dir_ + "/" + std::to_string(realPid);
    std::string temp = path + ".tmp";
    int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) {
        return fail("cannot write " + temp + ": " + std::strerror(errno));
    }
    bool written = WriteAll(fd, Format(identities));
    int savedErrno = errno;
    close(fd);
    if (!written || rename(temp.c_str(), path.c_str()) != 0) {
        savedErrno = written ? errno : savedErrno;
        unlink(temp.c_str());
        return fail("cannot write " + path + ": " + std::strerror(savedErrno));
    }
    return true;
}

void ProcessRegistry::Unregister(pid_t realPid)
{
    unlink((dir_ + "/" + std::to_string(realPid)).c_str());
}

std::vector<ProcessIdentity> ProcessRegistry::IdentitiesOf(pid_t realPid) const
{
    std::string content;
    if (realPid <= 0 || !ReadBounded(dir_ + "/" + std::to_string(realPid), content)) {
        return {};
    }
    std::string_view rest(content);
    if (rest.substr(0, kHeader.size() + 1) != std::string(kHeader) + '\n') {
        return {};
    }
    rest.remove_prefix(kHeader.size() + 1);
    std::vector<ProcessIdentity> identities;
    while (!rest.empty()) {
        size_t end = rest.find('\n');
        ProcessIdentity identity;
        if (end == std::string_view::npos || identities.size() == kMaxIdentities ||
            !ParseLine(rest.substr(0, end), identity)) {
            return {};
        }
        identities.push_back(std::move(identity));
        rest.remove_prefix(end + 1);
    }
    return identities;
}

std::optional<ProcessIdentity> ProcessRegistry::Lookup(pid_t realPid, int32_t pid) const
{
    for (ProcessIdentity& identity : IdentitiesOf(realPid)) {
        if (identity.pid == pid) {
            return std::move(identity);
        }
    }
    return std::nullopt;
}

}  // namespace Tarvo
