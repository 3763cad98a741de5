#ifndef ZEL_MANAGER_RESOLUTION_MANAGER_H
#define ZEL_MANAGER_RESOLUTION_MANAGER_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "refbase.h"
#include "zel_event_handle.h"

namespace Tarvo::Vantel {

enum ResolutionLevel : int32_t {
    LOW = 1,
    MIDDLE = 2,
    HIGH = 3,
};

// Seeds the settings database with the resolution modes the display settings offer and stores
// mode changes there. The database may come up after us, so the first read and the initial writes
// are retried on the event handle. Counters only grow and need no lock among their writers: every
// change happens on the start-up path or the event thread, which never overlap (retries are delayed
// by seconds). stateLock_ is only for a dump reading them, and what was last stored, elsewhere.
class ResolutionManager : public RefBase {
public:
    // A copy of the live state, for a dump; -1: nothing stored yet.
    struct State {
        int32_t mode = -1;
        int32_t modeResult = -1;  // the settings update's result
        int32_t style = -1;
        int32_t configureRetryTimes = 0;
        int32_t databaseRetryTimes = 0;
    };

    using NumbersConfig = std::map<std::string, std::vector<int32_t>>;

    static constexpr int32_t CONFIGURE_RETRY_LIMIT = 0;
    static constexpr int32_t DATABASE_RETRY_LIMIT = 5;
    static constexpr int64_t CONFIGURE_RETRY_DELAY_MS = 2000;
    static constexpr int64_t DATABASE_RETRY_DELAY_MS = 5000;

    static ResolutionManager* GetInstance();

    void ConfigureResolutionMode();
    static void InitDefaultResolutionMode();
    void SetResolutionMode(int32_t mode, int32_t flag);
    void GetResolutionParamsByMode(ResolutionLevel level, uint32_t& width, uint32_t& height, uint32_t& density);
    int32_t CheckResolutionParamValid(NumbersConfig numbers);
    void SetInitialDatabaseValue(NumbersConfig numbers);
    void InitSettingsDataRetry(int32_t& retryTimes);
    void SetSettingsDataRetry(int32_t& retryTimes, NumbersConfig numbers);
    void SetResolution(uint32_t width, uint32_t height, uint32_t density);
    State DumpState();

    ResolutionManager();
    ~ResolutionManager() override = default;
    ResolutionManager(const ResolutionManager&) = delete;
    ResolutionManager& operator=(const ResolutionManager&) = delete;

private:
    void RememberMode(int32_t mode, int32_t result);
    void RememberStyle(int32_t style, int32_t result);

    int32_t configureRetryTimes_ = 0;
    int32_t databaseRetryTimes_ = 0;
    EventHandle* eventHandle_ = nullptr;
    std::mutex stateLock_;
    int32_t mode_ = -1;
    int32_t modeResult_ = -1;
    int32_t style_ = -1;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_RESOLUTION_MANAGER_H
