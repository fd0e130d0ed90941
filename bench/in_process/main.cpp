#include <benchmark/benchmark.h>

#include "diagnostics/log.h"
#include "platform/windows_api.h"

int main(int argc, char** argv) {
    g_LogFileName = WIDE_TEXT("tollmere_bench.log");
    g_LogRotationEnabled = true;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
