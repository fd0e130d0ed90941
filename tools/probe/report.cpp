#include "tools/probe/report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// The 64-bit ids are texts: many readers of JSON keep numbers in 53 bits.
Json ToJson(const launcher::InfoResponse& info) {
    return {{"answer", "info_response"},
            {"request_id", std::to_string(info.m_RequestId)},
            {"steam_id", std::to_string(info.m_SteamId)},
            {"persona", info.m_PersonaName},
            {"ticket_length", info.m_TicketLength},
            {"ticket", info.m_Ticket}};
}

Json ToJson(const launcher::LaunchResponse& launch) {
    return {{"answer", "launch_response"},
            {"request_id", std::to_string(launch.m_RequestId)},
            {"process_id", launch.m_ProcessId}};
}

Json ToJson(const launcher::Failure& failure) {
    return {{"answer", "failure"}, {"request_id", std::to_string(failure.m_RequestId)}};
}

std::string Printable(const std::string& text) {
    std::string printable;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02X", byte);
            printable += escape;
        } else {
            printable += c;
        }
    }
    return printable;
}

void PrintLine(std::FILE* file, const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), file);
    std::fputc('\n', file);
    std::fflush(file);
}

}  // namespace

void ReportAnswer(const launcher::Answer& answer, bool asJson) {
    const Json json = std::visit([](const auto& one) { return ToJson(one); }, answer);
    // A name is whatever the user made it: what isn't UTF-8 is shown as U+FFFD.
    constexpr auto kReplace = Json::error_handler_t::replace;
    if (asJson) {
        PrintLine(stdout, json.dump(-1, ' ', false, kReplace));
        return;
    }
    for (const auto& [key, value] : json.items()) {
        PrintLine(stdout, key + ": " + (value.is_string() ? Printable(value.get<std::string>()) : value.dump()));
    }
}

void ReportLine(const std::string& text) {
    PrintLine(stdout, Printable(text));
}

void ReportJson(const std::string& json) {
    PrintLine(stdout, json);
}

void ReportEvent(const std::string& text) {
    PrintLine(stderr, Printable(text));
}

void ReportError(const std::string& text) {
    PrintLine(stderr, "probe: " + Printable(text));
}
