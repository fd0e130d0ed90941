#include "tools/probe/event_words.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr char kId[] = "id";
constexpr char kSteamId[] = "si";

std::string Meaning(const Json& id) {
    const char* const kMeanings[] = {"no window", "no pipe", "Steam refused each attempt", "how far the start got"};
    if (id.is_number_unsigned() && id.get<std::uint64_t>() < std::size(kMeanings)) return kMeanings[id.get<int>()];
    return "unknown event " + id.dump();
}

std::string KeyInWords(const std::string& key) {
    static const std::map<std::string, std::string> words = {{"we", "Windows' error number"},
                                                             {"pe", "Windows' error number (231: another helper)"},
                                                             {"as", "Steam accepted an attempt"},
                                                             {"sa", "app id"},
                                                             {"sd", "the Steam library was loaded"},
                                                             {"sp", "its SteamAPI_Init was found"},
                                                             {"so", "Steam is offline"},
                                                             {kSteamId, "the user's Steam id"},
                                                             {"sl", "a game directory is known"},
                                                             {"st", "there is a ticket"},
                                                             {"ss", "Steam is up"}};
    const auto found = words.find(key);
    return found == words.end() ? key : found->second;
}

std::string ValueInWords(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// `ticks` counts 100 ns from 1 January 1601 UTC.
std::string Date(const Json& ticks) {
    using namespace std::chrono;
    constexpr std::uint64_t kTicksASecond = 10'000'000;
    if (!ticks.is_number_unsigned()) return "(no time)";
    const std::int64_t count = static_cast<std::int64_t>(ticks.get<std::uint64_t>() / kTicksASecond);
    const sys_seconds time = sys_days(year(1601) / January / 1) + seconds(count);
    const sys_days midnight = floor<days>(time);
    // The calendar of the library ends there.
    if (midnight > sys_days(year::max() / December / 31)) return "(no time)";
    const year_month_day day(midnight);
    const hh_mm_ss<seconds> clock(time - midnight);
    char text[64];
    std::snprintf(text, sizeof text, "%d-%02u-%02u %02d:%02d:%02d UTC", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

// Its text is the members of an object alone.
std::optional<Json> DataOf(const Json& event) {
    if (!event.is_object() || !event.contains("data") || !event["data"].is_string()) return std::nullopt;
    const Json data = Json::parse("{" + event["data"].get<std::string>() + "}", nullptr, false);
    return data.is_object() ? std::optional(data) : std::nullopt;
}

struct Event {
    std::string m_Date;
    std::string m_Meaning;
    Json m_Data;
};

std::optional<std::vector<Event>> ReadEvents(const std::string& store) {
    const Json document = Json::parse(store, nullptr, false);
    if (!document.is_object() || !document.contains("metrics") || !document["metrics"].is_array()) return std::nullopt;
    std::vector<Event> events;
    for (const Json& event : document["metrics"]) {
        const std::optional<Json> data = DataOf(event);
        if (!data) return std::nullopt;
        events.push_back({Date(event.value("time", Json())), Meaning(data->value(kId, Json())), *data});
    }
    return events;
}

}  // namespace

std::optional<std::vector<std::string>> EventsInWords(const std::string& store) {
    const auto events = ReadEvents(store);
    if (!events) return std::nullopt;
    std::vector<std::string> lines;
    for (const Event& event : *events) {
        lines.push_back(event.m_Date + "  " + event.m_Meaning);
        for (const auto& [key, value] : event.m_Data.items()) {
            if (key != kId) lines.push_back("    " + KeyInWords(key) + ": " + ValueInWords(value));
        }
    }
    return lines;
}

std::optional<std::vector<std::string>> EventsAsJson(const std::string& store) {
    const auto events = ReadEvents(store);
    if (!events) return std::nullopt;
    std::vector<std::string> lines;
    for (const Event& event : *events) {
        Json data = event.m_Data;
        if (data.contains(kSteamId) && data[kSteamId].is_number()) data[kSteamId] = data[kSteamId].dump();
        const Json json = {{"date", event.m_Date}, {"meaning", event.m_Meaning}, {"data", data}};
        lines.push_back(json.dump(-1, ' ', false, Json::error_handler_t::replace));
    }
    return lines;
}
