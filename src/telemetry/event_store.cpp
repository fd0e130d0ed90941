#include "telemetry/event_store.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics/text.h"
#include "telemetry/event_store_path.h"
#include "telemetry/json/json_string.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_token.h"
#include "telemetry/json/json_validator.h"
#include "telemetry/json/json_writer.h"
#include "telemetry/telemetry.h"
#include "telemetry/text_file.h"

namespace {

constexpr std::uint32_t kSaveCapacity = 0x100000;

// Decodes the value into `field`. False if it doesn't fit.
template <std::size_t capacity>
bool ReadText(const JsonToken& value, char (&field)[capacity]) {
    std::string decoded(static_cast<std::size_t>(value.m_ValueLength) + 1, '\0');
    if (!GetString(value, decoded.data(), decoded.size(), nullptr)) return false;
    const std::size_t length = decoded.find('\0');
    if (length >= capacity) return false;
    std::copy_n(decoded.data(), length + 1, field);
    return true;
}

// A bare or quoted number, decimal or, behind 0x, hexadecimal.
bool ReadTime(const JsonToken& value, std::uint64_t& time) {
    std::string text(value.m_Text + value.m_ValueOffset, static_cast<std::size_t>(value.m_ValueLength));
    std::erase(text, '"');
    unsigned long long number = 0;
    const bool hexadecimal = text.size() > 2 && text.compare(0, 2, "0x") == 0;
    const int assigned =
        hexadecimal ? ScanText(text.c_str(), "0x%llX", &number) : ScanText(text.c_str(), "%llu", &number);
    time = number;
    return assigned == 1;
}

bool ReadEntry(const JsonToken& entry, TelemetryEvent& event) {
    JsonToken name;
    JsonToken data;
    JsonToken time;
    return FindMember(entry, "name", name) && FindMember(entry, "data", data) && FindMember(entry, "time", time) &&
           ReadText(name, event.name) && ReadText(data, event.data) && ReadTime(time, event.time);
}

std::vector<TelemetryEvent> ReadEntries(const JsonToken& metrics) {
    std::vector<TelemetryEvent> entries;
    JsonToken entry;
    for (bool more = FirstChild(metrics, entry); more; more = NextToken(entry, entry)) {
        TelemetryEvent event;
        if (ReadEntry(entry, event)) entries.push_back(event);
    }
    return entries;
}

// Appends what there is room for; the entries nearest the end of the file stay.
void Merge(const std::vector<TelemetryEvent>& entries) {
    const auto queued = static_cast<std::int32_t>(g_TelemetrySource->m_Events.size());
    const auto room = static_cast<std::size_t>(std::max(g_TelemetrySource->GetMaxEvents() - queued, 0));
    const std::size_t dropped = entries.size() > room ? entries.size() - room : 0;
    for (std::size_t i = dropped; i < entries.size(); ++i) {
        QueueEvent(entries[i].name, entries[i].data, entries[i].time);
    }
}

// A control character without a letter of its own would make the file one that the next load refuses.
template <std::size_t capacity>
void ReplaceUnwritable(char (&field)[capacity]) {
    for (char* character = field; *character != '\0'; ++character) {
        const bool hasLetter = std::string_view("\b\f\n\r\t").find(*character) != std::string_view::npos;
        if (HasClass(*character, ClassControl) && !hasLetter) *character = ' ';
    }
}

bool WriteEvent(JsonWriter& writer, TelemetryEvent event) {
    ReplaceUnwritable(event.name);
    ReplaceUnwritable(event.data);
    return writer.Begin() && writer.WriteString("name", event.name) && writer.WriteString("data", event.data) &&
           writer.WriteUInt64("time", event.time) && writer.End();
}

}  // namespace

bool LoadEvents() {
    const std::lock_guard lock(g_TelemetryLock);
    if (g_TelemetrySource == nullptr) return false;
    WideString path;
    WideString wideText;
    if (!GetEventStorePath(path) || !IsFile(path) || !ReadTextFile(path, wideText)) return false;

    const std::string text = WideToUtf8(wideText.c_str());
    if (!ValidateDocument(text.data(), text.size())) {
        if (IsFile(path)) DeleteFileW(path.c_str());
        return false;
    }
    JsonToken document;
    JsonToken metrics;
    // A token counts in 31 bits; no store of ours comes near that.
    if (text.size() > std::size_t{std::numeric_limits<std::int32_t>::max()}) return false;
    if (!ParseToken(document, text.data(), static_cast<std::uint32_t>(text.size()))) return false;
    if (!FindMember(document, "metrics", metrics)) return false;
    Merge(ReadEntries(metrics));
    return true;
}

bool SaveEvents() {
    const std::lock_guard lock(g_TelemetryLock);
    LoadEvents();
    WideString path;
    if (!GetEventStorePath(path)) return false;

    const auto buffer = std::make_unique_for_overwrite<char[]>(kSaveCapacity);
    JsonWriter writer;
    writer.m_Buffer = buffer.get();
    writer.m_Capacity = kSaveCapacity;
    if (!writer.Begin() || !writer.BeginArray("metrics")) return false;
    auto& events = g_TelemetrySource->m_Events;
    while (!events.empty()) {
        if (!WriteEvent(writer, events.front())) return false;
        events.erase(events.begin());
    }
    if (!writer.End() || !writer.End()) return false;
    return WriteTextFile(path, Utf8ToWide(buffer.get()));
}
