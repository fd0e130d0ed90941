#include "bench/pipe/load_options.h"

#include <algorithm>
#include <CLI/CLI.hpp>

namespace pipe_bench {

namespace {

constexpr char kDescription[] =
    "Measures servers that answer over pipes, in turn and in one run, and writes the times as JSON.";

// NAME=PIPE
NamedPipe ParseContender(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw CLI::ValidationError(text, "is not NAME=PIPE");
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::vector<NamedPipe> ParseContenders(const std::vector<std::string>& texts) {
    std::vector<NamedPipe> contenders;
    std::transform(texts.begin(), texts.end(), std::back_inserter(contenders), ParseContender);
    return contenders;
}

}  // namespace

std::optional<int> ParseLoadOptions(std::vector<std::string> arguments, LoadOptions& options) {
    CLI::App app(kDescription, "pipe_load");
    app.allow_windows_style_options(false);
    std::vector<std::string> contenders, floors;
    unsigned pacedTime = static_cast<unsigned>(options.m_PacedTime.count());
    unsigned limit = static_cast<unsigned>(options.m_Limit.count());
    app.add_option("CONTENDER", contenders, "NAME=PIPE; all must answer what the first does")->required();
    app.add_option("--floor", floors, "NAME=PIPE that only has to answer with as many bytes");
    app.add_option("--rounds", options.m_Rounds)->capture_default_str()->check(CLI::PositiveNumber);
    app.add_option("--warm-up", options.m_WarmUpRounds, "rounds before those that count")->capture_default_str();
    app.add_option("--requests", options.m_Requests, "at full speed, in each round")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--batches", options.m_Batches, "of each size, in each round")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--paced", pacedTime, "seconds with ten requests a second to each; 0: none")->capture_default_str();
    app.add_option("--limit", limit, "seconds after which it all is given up")->capture_default_str();
    app.add_option("--output", options.m_Output, "the file to write")->required();
    try {
        arguments.erase(arguments.begin());
        std::reverse(arguments.begin(), arguments.end());  // as the library wants it
        app.parse(std::move(arguments));
        options.m_Contenders = ParseContenders(contenders);
        options.m_Floors = ParseContenders(floors);
    } catch (const CLI::Error& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    options.m_PacedTime = std::chrono::seconds(pacedTime);
    options.m_Limit = std::chrono::seconds(limit);
    return std::nullopt;
}

}  // namespace pipe_bench
