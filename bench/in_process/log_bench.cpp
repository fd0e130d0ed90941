// A thousand lines, as far as into the file, on one thread and on four. Nobody debugs the process.

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>

#include "diagnostics/log.h"

namespace {

constexpr int kLines = 1000;
constexpr int kStateBefore = 1;

void LogWithTollmere(benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < kLines; ++i) {
            Log("SteamService :: SetState (%d -> %d) (%s -> %s)", kStateBefore, i, "WaitForLauncher",
                "WaitForGameLaunch");
        }
        FlushLog();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

spdlog::logger& Spdlog() {
    static const std::filesystem::path path = std::filesystem::temp_directory_path() / "tollmere_bench_spdlog.log";
    static const std::shared_ptr<spdlog::logger> logger = [] {
        auto made = spdlog::basic_logger_mt("bench", path.string(), true);
        made->set_pattern("[%Y-%m-%d %H:%M:%S.%e] [%6P] [%4t] %v");
        return made;
    }();
    return *logger;
}

void LogWithSpdlog(benchmark::State& state) {
    spdlog::logger& logger = Spdlog();
    for (auto _ : state) {
        for (int i = 0; i < kLines; ++i) {
            logger.info("SteamService :: SetState ({} -> {}) ({} -> {})", kStateBefore, i, "WaitForLauncher",
                        "WaitForGameLaunch");
        }
        logger.flush();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

}  // namespace

BENCHMARK(LogWithTollmere)->Name("Log/tollmere")->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK(LogWithSpdlog)->Name("Log/spdlog")->Threads(1)->Threads(4)->UseRealTime();
