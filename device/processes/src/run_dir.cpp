#include "run_dir.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace Tarvo::Emu {
namespace {
namespace fs = std::filesystem;

std::string Reason(const std::string& what, int error)
{
    return what + ": " + strerror(error);
}

std::string TempDirectory()
{
    std::error_code ec;
    fs::path dir = fs::temp_directory_path(ec);
    return ec || dir.empty() ? std::string("/tmp") : dir.string();
}

// The folder exists, is a real folder (not a link) of this user, and nobody else may enter it.
bool MakePrivateDir(const std::string& path, bool* created, std::string* error)
{
    *created = mkdir(path.c_str(), 0700) == 0;
    if (!*created && errno != EEXIST) {
        *error = Reason("cannot create " + path, errno);
        return false;
    }
    struct stat st {};
    if (lstat(path.c_str(), &st) != 0) {
        *error = Reason("cannot inspect " + path, errno);
        return false;
    }
    if (!S_ISDIR(st.st_mode)) {
        *error = path + " is not a folder";
        return false;
    }
    if (st.st_uid != geteuid()) {
        *error = path + " belongs to another user";
        return false;
    }
    if ((st.st_mode & 077) != 0 && chmod(path.c_str(), 0700) != 0) {
        *error = Reason("cannot make " + path + " private", errno);
        return false;
    }
    return true;
}

// The pid a running device wrote in its lock file; 0 when it is not (yet) readable.
long ReadHolderPid(int fd)
{
    char text[24] = {};
    const ssize_t n = pread(fd, text, sizeof(text) - 1, 0);
    long pid = 0;
    for (ssize_t i = 0; i < n && text[i] >= '0' && text[i] <= '9'; ++i) {
        pid = pid * 10 + (text[i] - '0');
        if (pid > 0x7fffffff) {
            return 0;
        }
    }
    return pid;
}

bool IsSameFile(int fd, const std::string& path)
{
    struct stat opened {};
    struct stat named {};
    return fstat(fd, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

// Locks the folder's lock file; a lock left by a dead device is free again, so it is taken over.
int LockFolder(const std::string& dir, const std::string& lockPath, std::string* error)
{
    // A device leaving unlinks the file it locked: the lock then belongs to nobody, so open again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int fd = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd < 0) {
            *error = Reason("cannot open " + lockPath, errno);
            return -1;
        }
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int cause = errno;
            if (cause == EWOULDBLOCK) {
                const long pid = ReadHolderPid(fd);
                *error = "run folder " + dir + " is in use by another device (pid " +
                         (pid > 0 ? std::to_string(pid) : std::string("unknown")) + ")";
            } else {
                *error = Reason("cannot lock " + lockPath, cause);
            }
            close(fd);
            return -1;
        }
        if (IsSameFile(fd, lockPath)) {
            return fd;
        }
        close(fd);
    }
    *error = "cannot lock " + lockPath + ": it keeps being replaced";
    return -1;
}

bool WritePid(int fd, const std::string& lockPath, std::string* error)
{
    const std::string text = std::to_string(getpid()) + "\n";
    if (ftruncate(fd, 0) != 0 || pwrite(fd, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        *error = Reason("cannot write " + lockPath, errno);
        return false;
    }
    return true;
}

// Sockets and registry entries of a device that died are meaningless (and the registry could
// grant a reused pid an identity): start both folders empty.
bool MakeEmptySubfolder(const std::string& path, std::string* error)
{
    std::error_code ec;
    fs::remove_all(path, ec);
    bool created = false;
    return MakePrivateDir(path, &created, error);
}
}  // namespace

std::string RunDir::DefaultPath()
{
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/') {
        return std::string(runtime) + "/zel_device";
    }
    return TempDirectory() + "/zel_device-" + std::to_string(geteuid());
}

RunDir::RunDir(std::string path, int lockFd, bool ownsFolder)
    : path_(std::move(path)), lockFd_(lockFd), ownsFolder_(ownsFolder)
{
}

RunDir::~RunDir()
{
    if (keep_) {
        if (lockFd_ >= 0) {
            close(lockFd_);
        }
        return;
    }
    Remove();
}

std::unique_ptr<RunDir> RunDir::Open(const std::string& path, std::string* error)
{
    if (path.empty()) {
        *error = "run folder: empty path";
        return nullptr;
    }
    std::error_code ec;
    const std::string absolute = fs::absolute(path, ec).lexically_normal().string();
    if (ec) {
        *error = "run folder " + path + ": " + ec.message();
        return nullptr;
    }
    std::string dir =
        absolute.size() > 1 && absolute.back() == '/' ? absolute.substr(0, absolute.size() - 1) : absolute;
    if (dir.size() > kMaxPathLength) {
        *error = "run folder " + dir + ": path longer than " + std::to_string(kMaxPathLength) + " bytes";
        return nullptr;
    }
    bool created = false;
    if (!MakePrivateDir(dir, &created, error)) {
        return nullptr;
    }
    return Take(std::move(dir), created, error);
}

std::unique_ptr<RunDir> RunDir::OpenTemporary(std::string* error)
{
    std::string name = TempDirectory() + "/zel_device-run-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        *error = Reason("cannot create a run folder in " + TempDirectory(), errno);
        return nullptr;
    }
    if (name.size() > kMaxPathLength) {
        rmdir(name.c_str());
        *error = "run folder " + name + ": path longer than " + std::to_string(kMaxPathLength) + " bytes";
        return nullptr;
    }
    return Take(std::move(name), true, error);
}

std::unique_ptr<RunDir> RunDir::Take(std::string dir, bool created, std::string* error)
{
    const std::string lockPath = dir + "/lock";
    struct stat st {};
    // A lock file left behind means a device made this folder: taking it over includes removing it.
    const bool ownsFolder = created || lstat(lockPath.c_str(), &st) == 0;
    const int fd = LockFolder(dir, lockPath, error);
    if (fd < 0) {
        if (created) {
            rmdir(dir.c_str());
        }
        return nullptr;
    }
    std::unique_ptr<RunDir> runDir(new RunDir(std::move(dir), fd, ownsFolder));
    if (!WritePid(fd, lockPath, error) || !MakeEmptySubfolder(runDir->SocketDir(), error) ||
        !MakeEmptySubfolder(runDir->RegistryDir(), error)) {
        return nullptr;
    }
    unlink(runDir->ContextSocketPath().c_str());
    unlink(TimePagePath(runDir->Path()).c_str());
    return runDir;
}

void RunDir::Remove()
{
    if (lockFd_ < 0) {
        return;
    }
    std::error_code ec;
    fs::remove_all(SocketDir(), ec);
    fs::remove_all(RegistryDir(), ec);
    unlink(ContextSocketPath().c_str());
    unlink(TimePagePath(path_).c_str());
    // Unlinked while still locked: a device opening it meanwhile sees the file change and retries.
    unlink(LockPath().c_str());
    if (ownsFolder_) {
        rmdir(path_.c_str());
    }
    close(lockFd_);
    lockFd_ = -1;
}

}  // namespace Tarvo::Emu
