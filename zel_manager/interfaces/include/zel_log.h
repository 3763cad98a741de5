#ifndef ZEL_MANAGER_ZEL_LOG_H
#define ZEL_MANAGER_ZEL_LOG_H

#include "hilog.h"

namespace Tarvo::Vantel {
inline constexpr Tarvo::HiviewDFX::HiLogLabel ZEL_LOG_LABEL = {Tarvo::HiviewDFX::LOG_CORE, 0xD004608, "ZEL_MANAGER"};
}  // namespace Tarvo::Vantel

// The level is checked before the arguments are evaluated: a line nobody takes costs one load.
#define ZEL_LOG_AT(level, function, fmt, ...)                                                                        \
    do {                                                                                                             \
        if (Tarvo::HiviewDFX::HiLogIsLoggable(Tarvo::Vantel::ZEL_LOG_LABEL.domain, Tarvo::Vantel::ZEL_LOG_LABEL.tag, \
                                              level)) {                                                              \
            Tarvo::HiviewDFX::HiLog::function(Tarvo::Vantel::ZEL_LOG_LABEL, fmt __VA_OPT__(, ) __VA_ARGS__);         \
        }                                                                                                            \
    } while (0)

#define ZEL_LOGD(fmt, ...) ZEL_LOG_AT(Tarvo::HiviewDFX::LOG_DEBUG, Debug, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGI(fmt, ...) ZEL_LOG_AT(Tarvo::HiviewDFX::LOG_INFO, Info, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGW(fmt, ...) ZEL_LOG_AT(Tarvo::HiviewDFX::LOG_WARN, Warn, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGE(fmt, ...) ZEL_LOG_AT(Tarvo::HiviewDFX::LOG_ERROR, Error, fmt __VA_OPT__(, ) __VA_ARGS__)

#endif  // ZEL_MANAGER_ZEL_LOG_H
