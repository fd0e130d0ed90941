#include "telemetry/event_store.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "diagnostics/text.h"
#include "telemetry/event_store_path.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_token.h"
#include "telemetry/json/json_validator.h"
#include "telemetry/json/json_writer.h"
#include "telemetry/telemetry.h"
#include "telemetry/text_file.h"

namespace {

constexpr std::uint32_t kSaveCapacity = 0x100000;

// The wide form is gone when this returns: a large file is not held twice for long.
bool ReadUtf8(const WideString& path, std::string& text) {
    WideString wideText;
    if (!ReadTextFile(path, wideText)) return false;
    text = WideToUtf8(wideText.c_str());
    return true;
}

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

// The last `most` entries that can be used. A file may hold any number of them, and a record is far larger than a short
// entry.
std::deque<TelemetryEvent> ReadLastEntries(const JsonToken& metrics, std::size_t most) {
    std::deque<TelemetryEvent> entries;
    JsonToken entry;
    for (bool more = FirstChild(metrics, entry); more; more = NextToken(entry, entry)) {
        TelemetryEvent event;
        if (!ReadEntry(entry, event)) continue;
        entries.push_back(event);
        if (entries.size() > most) entries.pop_front();
    }
    return entries;
}

// Appends what there is room for; the entries nearest the end of the file stay.
void Merge(const JsonToken& metrics) REQUIRES(g_TelemetryLock) {
    const auto queued = static_cast<std::int32_t>(g_TelemetrySource->m_Events.size());
    const auto room = static_cast<std::size_t>(std::max(g_TelemetrySource->GetMaxEvents() - queued, 0));
    for (const TelemetryEvent& entry : ReadLastEntries(metrics, room)) QueueEvent(entry.name, entry.data, entry.time);
}

bool Load() REQUIRES(g_TelemetryLock) {
    if (g_TelemetrySource == nullptr) return false;
    WideString path;
    std::string text;
    if (!GetEventStorePath(path) || !IsFile(path) || !ReadUtf8(path, text)) return false;

    if (!ValidateDocument(text.data(), text.size())) {
        if (IsFile(path)) DeleteFileW(path.c_str());
        return false;
    }
    JsonToken document;
    JsonToken metrics;
    if (!ParseToken(document, text.data(), static_cast<std::uint32_t>(text.size()))) return false;
    if (!FindMember(document, "metrics", metrics)) return false;
    Merge(metrics);
    return true;
}

// A control character that has no short escape such as \n would make a file that the next load refuses.
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

bool Save() REQUIRES(g_TelemetryLock) {
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

}  // namespace

// In both a lack of memory counts as a failure, so that no file can end the process.

bool LoadEvents() noexcept {
    const LockGuard lock(g_TelemetryLock);
    try {
        return Load();
    } catch (...) {
        return false;
    }
}

bool SaveEvents() noexcept {
    const LockGuard lock(g_TelemetryLock);
    try {
        // If this throws, nothing is saved: the file whose events couldn't be read stays as it is.
        Load();
        return Save();
    } catch (...) {
        return false;
    }
}
