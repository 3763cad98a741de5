#include "zel_log.h"

#include <gtest/gtest.h>

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::HiLogOutput;
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_ERROR;

TEST(ZelLogTest, ArgumentsOfALevelNobodyTakesAreNotEvaluated)
{
    int evaluated = 0;
    auto argument = [&evaluated] { return ++evaluated; };
    HiviewDFX::LogCapture capture;
    HiLogOutput::SetStderrEnabled(false);
    HiLogOutput::SetMinLevel(LOG_ERROR);
    ZEL_LOGD("d %{public}d", argument());
    ZEL_LOGI("i %{public}d", argument());
    ZEL_LOGW("w %{public}d", argument());
    ZEL_LOGE("e %{public}d", argument());
    HiLogOutput::SetMinLevel(LOG_DEBUG);
    ZEL_LOGI("i %{public}d", argument());
    EXPECT_EQ(evaluated, 2);
    EXPECT_EQ(capture.Lines(), (std::vector<std::string>{"E e 1", "I i 2"}));
}

}  // namespace
}  // namespace Tarvo::Vantel
