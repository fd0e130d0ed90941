#include "tools/steam_stand_in/script.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "support/system.h"
#include "tools/steam_stand_in/record.h"

namespace script {

namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

template <class Number>
bool ReadNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty();
}

std::optional<std::string> FromHex(const std::string& text) {
    if (text.size() % 2 != 0) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned value = 0;
        const char* const end = text.data() + i + 2;
        if (std::from_chars(end - 2, end, value, 16).ptr != end) return std::nullopt;
        bytes += static_cast<char>(value);
    }
    return bytes;
}

void Reject(const char* variable, const std::string& value) {
    RecordError(std::string(variable).append(" makes no sense: ").append(value));
}

std::optional<Callback> ReadCallback(const std::string& entry) {
    const std::vector<std::string> fields = Split(entry, ':');
    Callback callback;
    if (fields.size() < 3 || fields.size() > 4) return std::nullopt;
    if (!ReadNumber(fields[0], callback.m_Pump) || !ReadNumber(fields[1], callback.m_Id)) return std::nullopt;
    if (fields[2] != "null") {
        callback.m_Payload = FromHex(fields[2]);
        if (!callback.m_Payload) return std::nullopt;
    }
    callback.m_AsCallResult = fields.size() == 4;
    if (callback.m_AsCallResult && fields[3] != "result") return std::nullopt;
    return callback;
}

}  // namespace

bool InitSucceeds() {
    constexpr char kVariable[] = "STEAM_STAND_IN_INIT";
    constexpr std::string_view kOnlyIn = "only-in:";
    const std::string rule = support::Variable(kVariable).value_or("ok");
    if (rule == "ok") return true;
    if (rule == "fail") return false;
    if (rule == "fail-first") {
        static bool failed = false;  // every second call, so that a process can go through it more than once
        failed = !failed;
        return !failed;
    }
    if (rule.starts_with(kOnlyIn)) return support::IsCurrentDirectory(rule.substr(kOnlyIn.size()));
    Reject(kVariable, rule);
    return true;
}

bool IsRefused(std::string_view name) {
    constexpr char kVariable[] = "STEAM_STAND_IN_NULL";
    constexpr auto kNames =
        std::to_array<std::string_view>({"SteamClient", "HSteamUser", "HSteamPipe", "SteamUser", "SteamFriends",
                                         "SteamUtils", "SteamApps", "SteamUserStats", "SteamController", "Ticket"});
    bool refused = false;
    const std::string list = support::Variable(kVariable).value_or("");
    if (list.empty()) return false;
    for (const std::string& entry : Split(list, ',')) {
        if (std::find(kNames.begin(), kNames.end(), entry) == kNames.end()) Reject(kVariable, entry);
        refused = refused || entry == name;
    }
    return refused;
}

std::uint64_t SteamId() {
    constexpr char kVariable[] = "STEAM_STAND_IN_STEAM_ID";
    std::uint64_t id = 76561197960287930;
    const std::optional<std::string> value = support::Variable(kVariable);
    if (value && !ReadNumber(*value, id)) Reject(kVariable, *value);
    return id;
}

std::string PersonaName() {
    return support::Variable("STEAM_STAND_IN_PERSONA").value_or("Tollmere Player");
}

bool IsLoggedOn() {
    constexpr char kVariable[] = "STEAM_STAND_IN_LOGGED_ON";
    const std::string value = support::Variable(kVariable).value_or("1");
    if (value != "0" && value != "1") Reject(kVariable, value);
    return value != "0";
}

std::string Ticket() {
    constexpr char kVariable[] = "STEAM_STAND_IN_TICKET";
    constexpr char kDefault[] = "14000000DEADBEEF000102030405060708090A0B";
    const std::string value = support::Variable(kVariable).value_or(kDefault);
    const std::optional<std::string> bytes = FromHex(value);
    if (bytes) return *bytes;
    Reject(kVariable, value);
    return *FromHex(kDefault);
}

std::optional<std::uint32_t> TicketLength() {
    constexpr char kVariable[] = "STEAM_STAND_IN_TICKET_LENGTH";
    const std::optional<std::string> value = support::Variable(kVariable);
    if (!value) return std::nullopt;
    std::uint32_t length = 0;
    if (ReadNumber(*value, length)) return length;
    Reject(kVariable, *value);
    return std::nullopt;
}

std::vector<Callback> Callbacks() {
    constexpr char kVariable[] = "STEAM_STAND_IN_CALLBACKS";
    // The real client confirms a ticket soon after it was asked for: handle 4097, result 1.
    const std::string list = support::Variable(kVariable).value_or("1:163:0110000001000000");
    std::vector<Callback> callbacks;
    if (list.empty()) return callbacks;
    for (const std::string& entry : Split(list, ';')) {
        if (const std::optional<Callback> callback = ReadCallback(entry)) {
            callbacks.push_back(*callback);
        } else {
            Reject(kVariable, entry);
        }
    }
    return callbacks;
}

}  // namespace script
