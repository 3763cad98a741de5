#ifndef ZEL_MANAGER_ZEL_LOG_H
#define ZEL_MANAGER_ZEL_LOG_H

#include "hilog.h"

namespace Tarvo::Vantel {
inline constexpr Tarvo::HiviewDFX::HiLogLabel ZEL_LOG_LABEL = {Tarvo::HiviewDFX::LOG_CORE, 0xD004608, "ZEL_MANAGER"};
}  // namespace Tarvo::Vantel

#define ZEL_LOGD(fmt, ...) Tarvo::HiviewDFX::HiLog::Debug(Tarvo::Vantel::ZEL_LOG_LABEL, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGI(fmt, ...) Tarvo::HiviewDFX::HiLog::Info(Tarvo::Vantel::ZEL_LOG_LABEL, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGW(fmt, ...) Tarvo::HiviewDFX::HiLog::Warn(Tarvo::Vantel::ZEL_LOG_LABEL, fmt __VA_OPT__(, ) __VA_ARGS__)
#define ZEL_LOGE(fmt, ...) Tarvo::HiviewDFX::HiLog::Error(Tarvo::Vantel::ZEL_LOG_LABEL, fmt __VA_OPT__(, ) __VA_ARGS__)

#endif  // ZEL_MANAGER_ZEL_LOG_H
