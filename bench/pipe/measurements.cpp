#include "bench/pipe/measurements.h"

#include <array>
#include <functional>
#include <thread>

namespace pipe_bench {

namespace {

constexpr std::array<std::size_t, 3> kBatchSizes = {1, 8, 64};

double Nanoseconds(std::chrono::nanoseconds time) {
    return static_cast<double>(time.count());
}

// Calls `measure` with the number of each contender in each round, and whether the round counts.
void GoRound(std::size_t contenders, const LoadOptions& options,
             const std::function<void(std::size_t contender, bool counts)>& measure) {
    const unsigned rounds = options.m_WarmUpRounds + options.m_Rounds;
    for (unsigned round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < contenders; ++i) {
            measure((round + i) % contenders, round >= options.m_WarmUpRounds);
        }
    }
}

std::string Repeat(const std::string& text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

}  // namespace

void MeasureFullSpeed(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results) {
    Samples samples(options.m_Requests);
    GoRound(contenders.size(), options, [&](std::size_t i, bool counts) {
        for (double& sample : samples) sample = Nanoseconds(contenders[i].Exchange(RequestFrame(), 1));
        if (counts) results[i].m_FullSpeed.emplace_back(samples);
    });
}

void MeasurePaced(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kCycle{100};
    // Each has its own place in the cycle, so that all have been left alone equally long.
    const Clock::duration step = Clock::duration(kCycle) / static_cast<Clock::rep>(contenders.size());
    const Clock::time_point begin = Clock::now();
    const auto cycles = options.m_PacedTime / kCycle;
    for (std::chrono::seconds::rep cycle = 0; cycle < cycles; ++cycle) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            std::this_thread::sleep_until(begin + cycle * kCycle + static_cast<Clock::rep>(i) * step);
            results[i].m_Paced.push_back(Nanoseconds(contenders[i].Exchange(RequestFrame(), 1)));
        }
    }
}

void MeasureBatches(std::vector<Contender>& contenders, const LoadOptions& options, AllMeasured& results) {
    Samples samples(options.m_Batches);
    for (const std::size_t size : kBatchSizes) {
        const std::string requests = Repeat(RequestFrame(), size);
        GoRound(contenders.size(), options, [&](std::size_t i, bool counts) {
            for (double& sample : samples) {
                sample = Nanoseconds(contenders[i].Exchange(requests, size)) / static_cast<double>(size);
            }
            if (counts) results[i].m_Batches[size].push_back(Percentile(samples, 50));
        });
    }
}

}  // namespace pipe_bench
