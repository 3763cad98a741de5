#ifndef ZEL_MANAGER_TEST_RECORDING_RENDER_SERVICE_H
#define ZEL_MANAGER_TEST_RECORDING_RENDER_SERVICE_H

#include <mutex>
#include <string>
#include <vector>

#include "render_service_stub.h"

namespace Tarvo::Vantel::Test {

// Where the arbiter would be: every notice as one line ("pkg 1 name:id:type",
// "VOTER_SCENE on 0-0 DESC", "light 1"). Tests of votes other than scenes may leave the
// description out.
class RecordingRenderService : public RenderServiceStub {
public:
    explicit RecordingRenderService(bool withDescription = true) : withDescription_(withDescription) {}

    void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList) override
    {
        std::string line = "pkg " + std::to_string(listSize);
        for (const auto& pkg : packageList) {
            line += " " + pkg;
        }
        Record(line);
    }
    void NotifyRefreshRateEvent(const EventInfo& info) override
    {
        Record(info.eventName + " " + (info.eventStatus ? "on " : "off ") + std::to_string(info.minRefreshRate) + "-" +
               std::to_string(info.maxRefreshRate) + (withDescription_ ? " " + info.description : ""));
    }
    void NotifyLightFactorStatus(bool isSafe) override { Record(std::string("light ") + (isSafe ? "1" : "0")); }

    // What arrived since the last call.
    std::vector<std::string> Take()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<std::string> taken;
        taken.swap(lines_);
        return taken;
    }

private:
    void Record(const std::string& line)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.push_back(line);
    }

    const bool withDescription_;
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace Tarvo::Vantel::Test

#endif  // ZEL_MANAGER_TEST_RECORDING_RENDER_SERVICE_H
