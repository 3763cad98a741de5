#include "platform_clock.h"

#include <atomic>
#include <cstdint>

namespace Tarvo {
namespace {
std::atomic<bool> gVirtual{false};
std::atomic<int64_t> gVirtualNowMs{0};
std::atomic<std::atomic<int64_t>*> gVirtualValue{&gVirtualNowMs};

std::chrono::steady_clock::time_point RealEpoch()
{
    static const auto epoch = std::chrono::steady_clock::now();
    return epoch;
}
}  // namespace

PlatformClock::time_point PlatformClock::now() noexcept
{
    if (gVirtual.load(std::memory_order_acquire)) {
        return time_point(duration(gVirtualValue.load(std::memory_order_acquire)->load(std::memory_order_acquire)));
    }
    const auto epoch = RealEpoch();
    return time_point(std::chrono::duration_cast<duration>(std::chrono::steady_clock::now() - epoch));
}

std::chrono::steady_clock::time_point PlatformClock::RealTimeOf(time_point when) noexcept
{
    return RealEpoch() + when.time_since_epoch();
}

bool PlatformClock::IsVirtual() noexcept
{
    return gVirtual.load(std::memory_order_acquire);
}

void PlatformClock::EnableVirtualTime() noexcept
{
    gVirtual.store(true, std::memory_order_release);
}

void PlatformClock::UseSharedValue(std::atomic<int64_t>* value) noexcept
{
    gVirtualValue.store(value, std::memory_order_release);
}

void PlatformClock::SetVirtualNow(time_point when) noexcept
{
    const int64_t target = when.time_since_epoch().count();
    std::atomic<int64_t>& value = *gVirtualValue.load(std::memory_order_acquire);
    int64_t current = value.load(std::memory_order_acquire);
    while (current < target && !value.compare_exchange_weak(current, target, std::memory_order_acq_rel)) {
    }
}

}  // namespace Tarvo
