#ifndef ZEL_MANAGER_RESOLUTION_MANAGER_H
#define ZEL_MANAGER_RESOLUTION_MANAGER_H

#include <cstdint>
#include <map>
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
// are retried on the event handle. Counters only grow and need no lock: every change happens on
// the start-up path or the event thread, which never overlap (retries are delayed by seconds).
class ResolutionManager : public RefBase {
public:
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

    ResolutionManager();
    ~ResolutionManager() override = default;
    ResolutionManager(const ResolutionManager&) = delete;
    ResolutionManager& operator=(const ResolutionManager&) = delete;

private:
    int32_t configureRetryTimes_ = 0;
    int32_t databaseRetryTimes_ = 0;
    EventHandle* eventHandle_ = nullptr;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_RESOLUTION_MANAGER_H
