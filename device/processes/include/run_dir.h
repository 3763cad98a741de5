#ifndef ZEL_DEVICE_PROCESSES_RUN_DIR_H
#define ZEL_DEVICE_PROCESSES_RUN_DIR_H

// The folder a serving device lives in: its processes' sockets (sock/), the process registry
// (registry/) and a lock file that keeps a second device out while this one runs. Private to the
// user (0700); nothing in it is trusted without checks by those who read it.

#include <sys/types.h>

#include <memory>
#include <string>

namespace Tarvo::Emu {

class RunDir {
public:
    // Sockets are bound at PATH/sock/<pid> and PATH/samgr: a longer folder path would not fit an
    // AF_UNIX address.
    static constexpr size_t kMaxPathLength = 90;

    // $XDG_RUNTIME_DIR/zel_device, else <temporary directory>/zel_device-<uid>.
    static std::string DefaultPath();

    // Creates (or takes over) the run folder at `path` and locks it. Null, with the reason, when it
    // cannot be made private to this user or another running device holds it.
    static std::unique_ptr<RunDir> Open(const std::string& path, std::string* error);
    // A fresh, unique run folder under the temporary directory (one run, then removed).
    static std::unique_ptr<RunDir> OpenTemporary(std::string* error);

    ~RunDir();
    RunDir(const RunDir&) = delete;
    RunDir& operator=(const RunDir&) = delete;

    const std::string& Path() const { return path_; }
    std::string SocketDir() const { return path_ + "/sock"; }
    std::string RegistryDir() const { return path_ + "/registry"; }
    std::string ContextSocketPath() const { return path_ + "/samgr"; }
    // The device's time page (clock, turns, work in flight), shared by its processes.
    static std::string TimePagePath(const std::string& path) { return path + "/time"; }
    std::string LockPath() const { return path_ + "/lock"; }

    // Leave the folder in place when this object goes (the destructor removes it otherwise).
    void Keep() { keep_ = true; }
    // Removes what the device put in the folder, then the folder itself if it made it; unlocks.
    void Remove();

private:
    RunDir(std::string path, int lockFd, bool ownsFolder);
    static std::unique_ptr<RunDir> Take(std::string dir, bool created, std::string* error);

    std::string path_;
    int lockFd_;
    bool ownsFolder_;
    bool keep_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESSES_RUN_DIR_H
