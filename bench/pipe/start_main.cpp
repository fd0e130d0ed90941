// Measures how long programs take from their start until a client can open their pipe: `process_start --help`.

#include <algorithm>
#include <chrono>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <thread>

#include "bench/pipe/connection.h"
#include "bench/pipe/pipe_path.h"
#include "bench/pipe/start_config.h"
#include "bench/pipe/watchdog.h"
#include "tools/surroundings/surroundings.h"

namespace {

using pipe_bench::StartContender;
using Json = nlohmann::ordered_json;

struct Options {
    std::string m_Config;
    std::string m_Output;
    unsigned m_Rounds = 20;
    unsigned m_WarmUpRounds = 1;
    unsigned m_Limit = 300;
};

std::optional<int> ParseOptions(std::vector<std::string> arguments, Options& options) {
    CLI::App app(
        "Measures how long programs take from their start until a client can open their pipe, in turn and in "
        "one run, and writes the times as JSON.",
        "process_start");
    app.allow_windows_style_options(false);
    app.add_option("CONFIG", options.m_Config, "the file that names the programs")->required();
    app.add_option("--rounds", options.m_Rounds)->capture_default_str();
    app.add_option("--warm-up", options.m_WarmUpRounds, "rounds before those that count")->capture_default_str();
    app.add_option("--limit", options.m_Limit, "seconds after which it all is given up")->capture_default_str();
    app.add_option("--output", options.m_Output, "the file to write")->required();
    try {
        arguments.erase(arguments.begin());
        std::reverse(arguments.begin(), arguments.end());  // as the library wants it
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    return std::nullopt;
}

// In milliseconds. The program is gone when this returns.
double MeasureStart(const StartContender& contender) {
    using Clock = std::chrono::steady_clock;
    const std::string path = pipe_bench::PipePath(contender.m_Pipe);
    pipe_bench::Connection connection;
    const Clock::time_point begin = Clock::now();
    test_support::ChildProcess process(contender.m_Start);
    while (!connection.TryOpen(path)) {
        if (!process.IsRunning()) throw std::runtime_error(contender.m_Name + ": ended before it served its pipe");
        std::this_thread::yield();
    }
    const Clock::time_point end = Clock::now();
    connection.Close();
    return std::chrono::duration<double, std::milli>(end - begin).count();
}

void Run(const Options& options) {
    const pipe_bench::Watchdog watchdog(std::chrono::seconds(options.m_Limit));
    const std::vector<StartContender> contenders = pipe_bench::ReadStartConfig(options.m_Config);
    Json report = {{"rounds", options.m_Rounds}, {"contenders", Json::object()}};
    for (const StartContender& contender : contenders) report["contenders"][contender.m_Name]["ms"] = Json::array();
    for (unsigned round = 0; round < options.m_WarmUpRounds + options.m_Rounds; ++round) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const StartContender& contender = contenders[(round + i) % contenders.size()];
            const double time = MeasureStart(contender);
            if (round >= options.m_WarmUpRounds) report["contenders"][contender.m_Name]["ms"].push_back(time);
        }
    }
    if (!surroundings::ReplaceFile(options.m_Output, report.dump(1) + "\n")) {
        throw std::runtime_error("can't be written: " + options.m_Output);
    }
}

}  // namespace

int main(int argc, char** argv) {
    surroundings::PrepareStandardStreams();
    Options options;
    if (const auto status = ParseOptions(surroundings::Arguments(argc, argv), options)) return *status;
    try {
        Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "process_start: %s\n", error.what());
        return 1;
    }
    return 0;
}
