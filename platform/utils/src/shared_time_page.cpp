#include "shared_time_page.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "time_page_layout.h"

namespace Tarvo {
namespace TimePage {
namespace {
std::atomic<Layout*> gAttached{nullptr};

Layout& Private()
{
    // Never unmapped: threads may count work until the very end of the process. Pages of the line
    // that are never touched cost nothing.
    static Layout* page = [] {
        void* memory = mmap(nullptr, sizeof(Layout), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            Fail("cannot map memory for virtual time");
        }
        auto* layout = new (memory) Layout;
        Initialise(*layout);
        return layout;
    }();
    return *page;
}
}  // namespace

Layout& Current()
{
    if (Layout* attached = gAttached.load(std::memory_order_acquire)) {
        return *attached;
    }
    return Private();
}

void Initialise(Layout& page)
{
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&page.mutex, &attr);
    pthread_mutexattr_destroy(&attr);
    // Turns ahead in line number below those behind, so line order is number order.
    page.nextBack = uint64_t{1} << 63;
    page.nextFront = page.nextBack - 1;
    page.header.version = kVersion;
    page.header.size = sizeof(Layout);
    page.header.magic.store(kMagic, std::memory_order_release);
}

void Fail(const char* what)
{
    std::fprintf(stderr, "virtual time: %s\n", what);
    std::abort();
}

Lock::Lock(Layout& page) : page_(page)
{
    const int result = pthread_mutex_lock(&page_.mutex);
    if (result == EOWNERDEAD) {
        // Every change commits with one store, so what the dead holder left is consistent.
        pthread_mutex_consistent(&page_.mutex);
    } else if (result != 0) {
        Fail("the lock of the time page is unusable");
    }
}

Lock::~Lock()
{
    pthread_mutex_unlock(&page_.mutex);
}

bool WaitChange(std::atomic<uint32_t>& word, uint32_t seen, int64_t timeoutMs)
{
    timespec timeout{timeoutMs / 1000, (timeoutMs % 1000) * 1000000};
    // Not a private futex: the word may lie in a mapping other processes share.
    const long result = syscall(SYS_futex, reinterpret_cast<uint32_t*>(&word), FUTEX_WAIT, seen,
                                timeoutMs < 0 ? nullptr : &timeout, nullptr, 0);
    return result == 0 || errno != ETIMEDOUT;
}

void Bump(std::atomic<uint32_t>& word)
{
    word.fetch_add(1, std::memory_order_release);
}

namespace {
std::atomic<int32_t> gOwnPid{0};
}  // namespace

int32_t OwnPid()
{
    int32_t pid = gOwnPid.load(std::memory_order_relaxed);
    if (pid == 0) {
        // A forked child starts with none (see the handler below).
        static const bool registered = [] {
            pthread_atfork(nullptr, nullptr, [] { gOwnPid.store(0, std::memory_order_relaxed); });
            return true;
        }();
        (void)registered;
        pid = static_cast<int32_t>(getpid());
        gOwnPid.store(pid, std::memory_order_relaxed);
    }
    return pid;
}

void WakeAll(std::atomic<uint32_t>& word)
{
    syscall(SYS_futex, reinterpret_cast<uint32_t*>(&word), FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}
}  // namespace TimePage

namespace {
using TimePage::Layout;

std::string Describe(const std::string& path, const char* problem)
{
    return path + ": " + problem + ": " + std::strerror(errno);
}

// The header of a mapped file, checked; empty when it is a page of this build.
std::string CheckHeader(const Layout& page, const std::string& path)
{
    if (page.header.magic.load(std::memory_order_acquire) != TimePage::kMagic) {
        return path + " is not a time page";
    }
    if (page.header.version != TimePage::kVersion) {
        return path + " is a time page of version " + std::to_string(page.header.version) + ", not " +
               std::to_string(TimePage::kVersion);
    }
    if (page.header.size != sizeof(Layout)) {
        return path + " declares " + std::to_string(page.header.size) + " bytes, not " + std::to_string(sizeof(Layout));
    }
    return {};
}

// Maps an existing page file after checking its kind and size; nullptr with a reason otherwise.
Layout* MapExisting(const std::string& path, std::string& reason)
{
    const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        reason = Describe(path, "cannot open");
        return nullptr;
    }
    struct stat status {};
    void* memory = MAP_FAILED;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        reason = path + " is not a regular file";
    } else if (static_cast<uint64_t>(status.st_size) != sizeof(Layout)) {
        reason =
            path + " holds " + std::to_string(status.st_size) + " bytes, a time page " + std::to_string(sizeof(Layout));
    } else if ((memory = mmap(nullptr, sizeof(Layout), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)) == MAP_FAILED) {
        reason = Describe(path, "cannot map");
    }
    close(fd);
    return memory == MAP_FAILED ? nullptr : static_cast<Layout*>(memory);
}
}  // namespace

bool SharedTimePage::Make(const std::string& path, std::string& reason)
{
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        reason = Describe(path, "cannot create");
        return false;
    }
    void* memory = MAP_FAILED;
    if (ftruncate(fd, sizeof(Layout)) != 0) {
        reason = Describe(path, "cannot size");
    } else if ((memory = mmap(nullptr, sizeof(Layout), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0)) == MAP_FAILED) {
        reason = Describe(path, "cannot map");
    }
    close(fd);
    if (memory == MAP_FAILED) {
        unlink(path.c_str());
        return false;
    }
    TimePage::Initialise(*new (memory) Layout);
    munmap(memory, sizeof(Layout));
    return true;
}

bool SharedTimePage::Attach(const std::string& path, std::string& reason)
{
    static std::mutex attaching;
    std::lock_guard<std::mutex> lock(attaching);
    if (Attached()) {
        reason = "this process uses a time page already";
        return false;
    }
    Layout* page = MapExisting(path, reason);
    if (page == nullptr) {
        return false;
    }
    reason = CheckHeader(*page, path);
    if (!reason.empty()) {
        munmap(page, sizeof(Layout));
        return false;
    }
    TimePage::gAttached.store(page, std::memory_order_release);
    return true;
}

bool SharedTimePage::Attached()
{
    return TimePage::gAttached.load(std::memory_order_acquire) != nullptr;
}

std::atomic<int64_t>* SharedTimePage::Clock()
{
    Layout* page = TimePage::gAttached.load(std::memory_order_acquire);
    return page == nullptr ? nullptr : &page->clockMs;
}

uint64_t SharedTimePage::Size()
{
    return sizeof(Layout);
}

}  // namespace Tarvo
