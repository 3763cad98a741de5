#include "trace_kinds.h"

#include <map>

namespace Tarvo::Emu {

const std::vector<std::string>* TraceKindFields(const std::string& ev)
{
    static const std::map<std::string, std::vector<std::string>> kinds = {
        {"mox.package", {"pkgs"}},
        {"mox.refresh", {"name", "status", "min", "max", "desc"}},
        {"mox.light", {"status"}},
        {"game.fps", {"bundle", "cb", "fps"}},
        {"settings.write", {"op", "key", "value", "ok"}},
        {"param.set", {"key", "value"}},
        {"screen.resolution", {"width", "height", "density"}},
        {"ipc.done", {"line", "code", "status", "reply"}},
        {"ipc.unsent", {"line", "code", "result"}},
        {"log", {"level", "msg"}},
        {"app.log", {"bundle", "level", "msg"}},
        {"expect", {"line", "ok"}},
        {"dump", {"line", "state"}},
    };
    auto it = kinds.find(ev);
    return it == kinds.end() ? nullptr : &it->second;
}

}  // namespace Tarvo::Emu
