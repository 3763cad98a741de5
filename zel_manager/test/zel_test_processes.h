#ifndef ZEL_MANAGER_TEST_ZEL_TEST_PROCESSES_H
#define ZEL_MANAGER_TEST_ZEL_TEST_PROCESSES_H

#include <memory>
#include <string>

#include "virtual_process.h"

namespace Tarvo::Vantel::Test {

// The kinds of caller the manager's checks tell apart.
enum class CallerKind { SYSTEM_APP, NATIVE, SHELL, ORDINARY_APP };

std::shared_ptr<VirtualProcess> MakeCaller(CallerKind kind, int32_t pid);
std::string KindName(CallerKind kind);

}  // namespace Tarvo::Vantel::Test

#endif  // ZEL_MANAGER_TEST_ZEL_TEST_PROCESSES_H
