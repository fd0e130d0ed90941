#include "bench/pipe/load_report.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tools/surroundings/surroundings.h"

namespace pipe_bench {

namespace {

using Json = nlohmann::ordered_json;

Json FullSpeed(const std::vector<Percentiles>& rounds) {
    Json json = {{"p50_ns", Json::array()}, {"p95_ns", Json::array()}, {"p99_ns", Json::array()}};
    for (const Percentiles& round : rounds) {
        json["p50_ns"].push_back(round.p50);
        json["p95_ns"].push_back(round.p95);
        json["p99_ns"].push_back(round.p99);
    }
    return json;
}

Json Paced(const Samples& samples) {
    if (samples.empty()) return nullptr;
    const Percentiles all(samples);
    return {{"p50_ns", all.p50}, {"p95_ns", all.p95}, {"p99_ns", all.p99}, {"samples_ns", samples}};
}

Json Batches(const std::map<std::size_t, Samples>& batches) {
    Json json;
    for (const auto& [size, rounds] : batches) json[std::to_string(size)] = {{"ns_per_frame", rounds}};
    return json;
}

}  // namespace

void WriteLoadReport(const LoadOptions& options, const std::vector<Contender>& contenders, std::size_t answerSize,
                     const AllMeasured& results) {
    Json report = {{"rounds", options.m_Rounds},
                   {"requests", options.m_Requests},
                   {"batches", options.m_Batches},
                   {"paced_seconds", options.m_PacedTime.count()},
                   {"request_bytes", RequestFrame().size()},
                   {"answer_bytes", answerSize}};
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        report["contenders"][contenders[i].Name()] = {{"full_speed", FullSpeed(results[i].m_FullSpeed)},
                                                      {"paced", Paced(results[i].m_Paced)},
                                                      {"batch", Batches(results[i].m_Batches)}};
    }
    if (!surroundings::ReplaceFile(options.m_Output, report.dump(1) + "\n")) {
        throw std::runtime_error("can't be written: " + options.m_Output);
    }
}

}  // namespace pipe_bench
