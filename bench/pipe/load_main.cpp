// Measures the helper's answers beside those of other servers: `pipe_load --help`.

#include <cstdio>
#include <stdexcept>

#include "bench/pipe/contender.h"
#include "bench/pipe/load_options.h"
#include "bench/pipe/load_report.h"
#include "bench/pipe/measurements.h"
#include "bench/pipe/watchdog.h"
#include "tools/surroundings/surroundings.h"

namespace {

using pipe_bench::Contender;

// Sees to it that all do the same work. Returns the size of their answer.
std::size_t CompareAnswers(std::vector<Contender>& contenders, std::size_t floors) {
    const std::string expected = contenders.front().Ask();
    for (std::size_t i = 1; i < contenders.size(); ++i) {
        const std::string answer = contenders[i].Ask();
        const bool isFloor = i >= contenders.size() - floors;
        if (answer.size() != expected.size() || (!isFloor && answer != expected)) {
            throw std::runtime_error(contenders[i].Name() + ": answers otherwise than " + contenders.front().Name() +
                                     ", with " + std::to_string(answer.size()) + " bytes instead of " +
                                     std::to_string(expected.size()));
        }
    }
    return expected.size();
}

void Run(const pipe_bench::LoadOptions& options) {
    const pipe_bench::Watchdog watchdog(options.m_Limit);
    std::vector<Contender> contenders;
    for (const auto& [name, pipe] : options.m_Contenders) contenders.emplace_back(name, pipe);
    for (const auto& [name, pipe] : options.m_Floors) contenders.emplace_back(name, pipe);
    const std::size_t answerSize = CompareAnswers(contenders, options.m_Floors.size());

    pipe_bench::AllMeasured results(contenders.size());
    pipe_bench::MeasureFullSpeed(contenders, options, results);
    pipe_bench::MeasurePaced(contenders, options, results);
    pipe_bench::MeasureBatches(contenders, options, results);
    pipe_bench::WriteLoadReport(options, contenders, answerSize, results);
}

}  // namespace

int main(int argc, char** argv) {
    surroundings::PrepareStandardStreams();
    pipe_bench::LoadOptions options;
    if (const auto status = pipe_bench::ParseLoadOptions(surroundings::Arguments(argc, argv), options)) return *status;
    try {
        Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pipe_load: %s\n", error.what());
        return 1;
    }
    return 0;
}
