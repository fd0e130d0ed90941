#include "bench/in_process/sample_store.h"

#include <nlohmann/json.hpp>

std::vector<SampleEvent> SampleEvents(std::size_t count) {
    std::vector<SampleEvent> events;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string data = R"("id":3,"sa":480,"sd":true,"sp":true,"so":false,"si":)" +
                                 std::to_string(76561197960287930 + i) +
                                 R"(,"sl":true,"st":true,"ss":true,"note":"the game was started by the launcher")";
        events.push_back({"STEAM_ACTION", data, 134'000'000'000'000'000 + i});
    }
    return events;
}

std::string SampleStore(std::size_t count) {
    nlohmann::ordered_json metrics = nlohmann::ordered_json::array();
    for (const SampleEvent& event : SampleEvents(count)) {
        metrics.push_back({{"name", event.m_Name}, {"data", event.m_Data}, {"time", event.m_Time}});
    }
    return nlohmann::ordered_json{{"metrics", metrics}}.dump();
}
