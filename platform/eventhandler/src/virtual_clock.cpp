#include "virtual_clock.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "sequencer.h"
#include "shared_time_page.h"
#include "work_tracker.h"

namespace Tarvo {
namespace {
struct Registry {
    std::mutex mutex;
    std::vector<std::weak_ptr<VirtualTimeClient>> clients;
    std::shared_ptr<VirtualTimeFleet> fleet;
};

// The driver's own process, alone.
class LocalFleet final : public VirtualTimeFleet {
public:
    std::optional<PlatformClock::time_point> NextDue() override { return VirtualClock::NextDueHere(); }
    bool MoveTo(PlatformClock::time_point when) override
    {
        VirtualClock::MoveHere(when);
        return true;
    }
};

Registry& GetRegistry()
{
    // Never destroyed: runners may go away during static destruction.
    static auto* registry = new Registry();
    return *registry;
}

// Strong references taken under the lock and used after it, so no client is called with it held.
std::vector<std::shared_ptr<VirtualTimeClient>> LiveClients()
{
    std::vector<std::shared_ptr<VirtualTimeClient>> live;
    Registry& registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    std::erase_if(registry.clients, [](const auto& client) { return client.expired(); });
    for (const auto& client : registry.clients) {
        if (auto strong = client.lock()) {
            live.push_back(std::move(strong));
        }
    }
    return live;
}

std::shared_ptr<VirtualTimeFleet> Fleet()
{
    Registry& registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    if (!registry.fleet) {
        registry.fleet = std::make_shared<LocalFleet>();
    }
    return registry.fleet;
}
}  // namespace

void VirtualClock::Install()
{
    PlatformClock::EnableVirtualTime();
    Sequencer::Enable();
}

bool VirtualClock::InstallShared(const std::string& path, std::string& reason)
{
    if (!SharedTimePage::Attach(path, reason)) {
        return false;
    }
    PlatformClock::UseSharedValue(SharedTimePage::Clock());
    Install();
    return true;
}

void VirtualClock::SetFleet(std::shared_ptr<VirtualTimeFleet> fleet)
{
    Registry& registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.fleet = std::move(fleet);
}

void VirtualClock::AddClient(const std::weak_ptr<VirtualTimeClient>& client)
{
    Registry& registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    std::erase_if(registry.clients, [](const auto& known) { return known.expired(); });
    registry.clients.push_back(client);
}

std::optional<PlatformClock::time_point> VirtualClock::NextDue()
{
    return Fleet()->NextDue();
}

std::optional<PlatformClock::time_point> VirtualClock::NextDueHere()
{
    std::optional<PlatformClock::time_point> earliest;
    for (const auto& client : LiveClients()) {
        const auto due = client->NextDue();
        if (due && (!earliest || *due < *earliest)) {
            earliest = due;
        }
    }
    return earliest;
}

bool VirtualClock::WaitQuiet(std::chrono::milliseconds quietLimit)
{
    return WorkTracker::GetInstance().WaitQuiet(quietLimit);
}

bool VirtualClock::AdvanceTo(PlatformClock::time_point until, std::chrono::milliseconds quietLimit)
{
    if (!PlatformClock::IsVirtual()) {
        return false;
    }
    if (until < PlatformClock::now()) {
        return true;
    }
    // Quiet first: work in flight may still post tasks that are due within this advance.
    for (;;) {
        if (!WaitQuiet(quietLimit)) {
            return false;
        }
        const auto next = NextDue();
        if (!next || *next > until) {
            break;
        }
        if (!MoveTo(*next)) {
            return false;
        }
    }
    return MoveTo(until) && WaitQuiet(quietLimit);
}

bool VirtualClock::AdvanceBy(PlatformClock::duration delta, std::chrono::milliseconds quietLimit)
{
    return AdvanceTo(PlatformClock::now() + std::max(delta, PlatformClock::duration::zero()), quietLimit);
}

bool VirtualClock::MoveTo(PlatformClock::time_point when)
{
    // Held while every client of every process reserves its turns, so a task that starts at once
    // cannot slip in between two clients and change their order.
    Sequencer::Hold hold;
    PlatformClock::SetVirtualNow(when);
    return Fleet()->MoveTo(when);
}

void VirtualClock::MoveHere(PlatformClock::time_point when)
{
    // Already there unless this process keeps a clock of its own.
    PlatformClock::SetVirtualNow(when);
    for (const auto& client : LiveClients()) {
        client->OnTimeAdvanced();
    }
}

}  // namespace Tarvo
