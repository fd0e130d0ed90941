// A thousand lines, as far as into the file, on one thread and on four. Nobody debugs the process; the program asks for
// a debugger all the same, with every line, which has a price where the system is Windows.

#include <benchmark/benchmark.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>

#include "diagnostics/log.h"
#include "platform/windows_api.h"

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

// What our log does beside writing its file: it shows each line to a debugger.
class DebuggerSink : public spdlog::sinks::base_sink<std::mutex> {
  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t text;
        formatter_->format(message, text);
        text.push_back('\0');
        WCHAR wide[1024];
        if (MultiByteToWideChar(CP_UTF8, 0, text.data(), -1, wide, 1024) > 0) OutputDebugStringW(wide);
    }
    void flush_() override {}
};

std::shared_ptr<spdlog::logger> MakeLogger(const std::string& name, spdlog::sinks_init_list others) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / ("tollmere_" + name + ".log");
    std::vector<spdlog::sink_ptr> sinks(others);
    sinks.push_back(std::make_shared<spdlog::sinks::basic_file_sink_mt>(path.string(), true));
    const auto logger = std::make_shared<spdlog::logger>(name, sinks.begin(), sinks.end());
    logger->set_pattern("[%Y-%m-%d %H:%M:%S.%e] [%6P] [%4t] %v");
    return logger;
}

void LogWith(spdlog::logger& logger, benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < kLines; ++i) {
            logger.info("SteamService :: SetState ({} -> {}) ({} -> {})", kStateBefore, i, "WaitForLauncher",
                        "WaitForGameLaunch");
        }
        logger.flush();
    }
    state.SetItemsProcessed(state.iterations() * kLines);
}

void LogWithSpdlog(benchmark::State& state) {
    static const auto logger = MakeLogger("spdlog", {});
    LogWith(*logger, state);
}

void LogWithSpdlogAndDebugger(benchmark::State& state) {
    static const auto logger = MakeLogger("spdlog_debugger", {std::make_shared<DebuggerSink>()});
    LogWith(*logger, state);
}

}  // namespace

BENCHMARK(LogWithTollmere)->Name("Log/tollmere")->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK(LogWithSpdlog)->Name("Log/spdlog")->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK(LogWithSpdlogAndDebugger)->Name("Log/spdlog_debugger")->Threads(1)->Threads(4)->UseRealTime();
