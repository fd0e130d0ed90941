#include "telemetry/telemetry.h"

#include <cstddef>
#include <cstring>
#include <string_view>

ExternalTelemetrySource* g_TelemetrySource = nullptr;
TelemetryHooks* g_TelemetryHooks = nullptr;
RecursiveLock g_TelemetryLock;

static char ToLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

bool SteamHelperTelemetry::AcceptsEvent(const char* name) {
    constexpr std::string_view kName = "steam_action";
    for (const char expected : kName) {
        if (ToLower(*name++) != expected) return false;
    }
    return *name == '\0';
}

template <std::size_t capacity>
static void CopyText(char (&field)[capacity], const char* text) {
    const auto isContinuation = [](char unit) { return (static_cast<unsigned char>(unit) & 0xC0) == 0x80; };
    std::size_t length = strnlen(text, capacity);
    if (length == capacity) {
        --length;
        while (length > 0 && isContinuation(text[length])) --length;
    }
    std::memcpy(field, text, length);
    field[length] = '\0';
}

bool QueueEvent(const char* name, const char* data, std::uint64_t time) {
    auto& events = g_TelemetrySource->m_Events;
    const bool isFull = static_cast<std::int32_t>(events.size()) >= g_TelemetrySource->GetMaxEvents();
    if (isFull && !events.empty()) events.erase(events.begin());
    TelemetryEvent& event = events.emplace_back();
    CopyText(event.name, name);
    CopyText(event.data, data);
    event.time = time;
    return true;
}
