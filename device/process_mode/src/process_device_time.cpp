// Virtual time for a device in real processes: the controller drives it through every process.
#include <algorithm>
#include <filesystem>

#include "process_device.h"
#include "sequencer.h"
#include "shared_time_page.h"
#include "socket_transport.h"
#include "virtual_clock.h"
#include "work_tracker.h"

namespace Tarvo::Emu {

// The controller first, then each process in pid order: the order the in-process device made them.
class ProcessDevice::Fleet final : public VirtualTimeFleet {
public:
    explicit Fleet(ProcessDevice& device) : device_(device) {}

    std::optional<PlatformClock::time_point> NextDue() override
    {
        std::optional<PlatformClock::time_point> earliest = VirtualClock::NextDueHere();
        for (Child* child : device_.ByPid()) {
            AgentControl control;
            control.code = AgentCode::NEXT_DUE;
            AgentReply reply;
            std::string ignored;
            if (device_.Control(child->name, control, &ignored, &reply) && reply.due >= 0) {
                const PlatformClock::time_point due{std::chrono::milliseconds(reply.due)};
                earliest = earliest ? std::min(*earliest, due) : due;
            }
        }
        return earliest;
    }

    bool MoveTo(PlatformClock::time_point when) override
    {
        VirtualClock::MoveHere(when);
        AgentControl control;
        control.code = AgentCode::MOVE;
        control.time = std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count();
        std::string ignored;
        for (Child* child : device_.ByPid()) {
            if (!device_.Control(child->name, control, &ignored)) {
                return false;
            }
        }
        return true;
    }

private:
    ProcessDevice& device_;
};

bool ProcessDevice::StartTime()
{
    const std::string page = RunDir::TimePagePath(runPath_);
    std::string reason;
    std::error_code ignored;
    // Left by a device that died in a folder it was given.
    std::filesystem::remove(page, ignored);
    if (!SharedTimePage::Make(page, reason) ||
        !(setup_.virtualTime ? VirtualClock::InstallShared(page, reason) : SharedTimePage::Attach(page, reason))) {
        return Fail(&failure_, "the device's time page cannot be shared: " + reason);
    }
    if (setup_.virtualTime) {
        VirtualClock::SetFleet(std::make_shared<Fleet>(*this));
    }
    return true;
}

std::vector<ProcessDevice::Child*> ProcessDevice::ByPid()
{
    std::vector<Child*> children;
    for (auto& [name, child] : children_) {
        children.push_back(&child);
    }
    std::sort(children.begin(), children.end(), [](const Child* a, const Child* b) { return a->pid < b->pid; });
    return children;
}

void ProcessDevice::Bury(Child& child)
{
    Sequencer::Forget(child.process->Pid());
    WorkTracker::GetInstance().Forget(child.process->Pid());
    if (!setup_.virtualTime) {
        // On the real clock each process learns of it as its connections close.
        return;
    }
    static_cast<SocketTransport&>(IPCTransport::Get()).PeerDied(child.pid);
    AgentControl control;
    control.code = AgentCode::DEATH;
    control.id = child.pid;
    for (Child* other : ByPid()) {
        ControlQuietly(other->name, control);
    }
}

}  // namespace Tarvo::Emu
