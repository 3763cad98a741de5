#include "device_layout.h"

#include <stdlib.h>

#include <filesystem>

#include "access_token_kit.h"
#include "input_text.h"
#include "interrupt_cleanup.h"
#include "tokenid_kit.h"

namespace Tarvo::Emu {
namespace fs = std::filesystem;
using Security::AccessToken::AccessTokenKit;
using Security::AccessToken::ATokenTypeEnum;
using Security::AccessToken::TokenIdKit;

namespace {
ProcessIdentity Identity(int32_t pid, int32_t uid, ATokenTypeEnum type, bool systemApp, const std::string& name)
{
    uint32_t token = AccessTokenKit::MakeTokenId(type, static_cast<uint32_t>(pid));
    return {pid, uid, token, TokenIdKit::MakeFullTokenId(token, systemApp), name};
}

// As it appears in the paths the service logs, which resolve links: canonical, no trailing '/'.
std::string AbsoluteDir(const std::string& dir)
{
    std::error_code failed;
    fs::path resolved = fs::canonical(dir, failed);
    if (failed) {
        resolved = fs::absolute(dir, failed).lexically_normal();
    }
    std::string absolute = resolved.string();
    while (absolute.size() > 1 && absolute.back() == '/') {
        absolute.pop_back();
    }
    return absolute;
}

std::string MakeTempDir()
{
    std::string pattern = (fs::temp_directory_path() / "zel_device.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        return {};
    }
    return pattern;
}

bool CopyConfig(const std::string& dataDir, const std::string& source, std::string* error)
{
    fs::path target = fs::path(DeviceLayout::ConfigFolder(dataDir)) / DeviceLayout::CONFIG_RELATIVE_PATH;
    std::error_code code;
    fs::create_directories(target.parent_path(), code);
    fs::copy_file(source, target, fs::copy_options::overwrite_existing, code);
    if (code) {
        if (error != nullptr) {
            *error = "cannot use configuration " + Shown(source) + ": " + code.message();
        }
        return false;
    }
    return true;
}
}  // namespace

namespace DeviceLayout {
ProcessIdentity NativeIdentity(int32_t pid, const std::string& name)
{
    return Identity(pid, 1000, Security::AccessToken::TOKEN_NATIVE, false, name);
}

ProcessIdentity SamgrIdentity()
{
    return NativeIdentity(SAMGR_PID, "samgr");
}

ProcessIdentity ServiceIdentity()
{
    return NativeIdentity(SERVICE_PID, "zel_manager_service");
}

ProcessIdentity CallerIdentity(CallerSpec::Kind kind, int32_t pid)
{
    switch (kind) {
        case CallerSpec::Kind::SYSTEM:
            return Identity(pid != 0 ? pid : SYSTEM_CALLER_PID, 1000, Security::AccessToken::TOKEN_HAP, true,
                            "system_caller");
        case CallerSpec::Kind::SHELL:
            return Identity(pid != 0 ? pid : SHELL_CALLER_PID, 2000, Security::AccessToken::TOKEN_SHELL, false,
                            "shell");
        default:
            return NativeIdentity(pid != 0 ? pid : NATIVE_CALLER_PID, "native_caller");
    }
}

ProcessIdentity AppIdentity(int32_t pid, const Package& package)
{
    return Identity(pid, package.uid, Security::AccessToken::TOKEN_HAP, package.system, package.bundle);
}

std::string ConfigFolder(const std::string& dataDir)
{
    return (fs::path(dataDir) / "system").string();
}
}  // namespace DeviceLayout

DataDirectory::DataDirectory(const std::string& given, bool keep) : path_(given)
{
    if (path_.empty()) {
        path_ = MakeTempDir();
        if (path_.empty()) {
            failure_ = "no temporary data directory could be made";
            return;
        }
        remove_ = !keep;
    }
    std::error_code ignored;
    fs::create_directories(path_, ignored);
    path_ = AbsoluteDir(path_);
    if (remove_) {
        RemoveOnInterrupt(path_);
    }
}

DataDirectory::~DataDirectory()
{
    if (remove_) {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
        KeepOnInterrupt(path_);
    }
}

bool UseConfigFile(const std::string& dataDir, const std::string& scenarioDir, const std::optional<std::string>& source,
                   std::string* error)
{
    if (!source) {
        std::error_code ignored;
        fs::remove(fs::path(DeviceLayout::ConfigFolder(dataDir)) / DeviceLayout::CONFIG_RELATIVE_PATH, ignored);
        return true;
    }
    fs::path path = *source;
    if (path.is_relative()) {
        path = fs::path(scenarioDir) / path;
    }
    if (!fs::exists(path)) {
        if (error != nullptr) {
            *error = "no such configuration file: " + Shown(path.string());
        }
        return false;
    }
    return CopyConfig(dataDir, path.string(), error);
}

}  // namespace Tarvo::Emu
