// The benchmarks' entry. The platform log stays quiet, since a line on stderr per request would be
// measured along with the request; at the end the program stops without tearing down the emulated
// processes, whose threads may still be anywhere.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "hilog.h"

int main(int argc, char** argv)
{
    Tarvo::HiviewDFX::HiLogOutput::SetStderrEnabled(false);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::fflush(nullptr);
    std::_Exit(0);
}
