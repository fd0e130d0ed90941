// The lowest layer of JsonWriter: bytes into the buffer, and what the last of them says about the next comma.

#include <algorithm>
#include <cstring>
#include <limits>

#include "diagnostics/log.h"
#include "telemetry/json/json_writer.h"

bool JsonWriter::WriteRaw(const char* text) {
    if (HasFailed()) {
        return false;
    }
    const std::size_t length = std::strlen(text);
    if (length == 0) {
        return true;
    }
    const std::int32_t room = Room();
    if (static_cast<std::size_t>(room) < length) {
        Log("Failed to WriteRaw() - Available(%d) < len(%d).", room, static_cast<int>(length));
        return Fail();
    }
    Store(text, static_cast<std::uint32_t>(length));
    return true;
}

bool JsonWriter::WriteRaw(char character) {
    if (HasFailed()) {
        return false;
    }
    const std::int32_t room = Room();
    if (room < 1) {
        Log("Failed to WriteRaw() - Available(%d) <= 0.", room);
        return Fail();
    }
    if ((m_Status & StatusMeasureOnly) == 0) {
        m_Buffer[m_Cursor] = character;
    }
    Advance(1, character);
    return true;
}

bool JsonWriter::WriteLineBreak(bool lineFeed, std::int32_t tabs) {
    if ((m_Options & OptionPretty) == 0 || HasFailed()) {
        return !HasFailed();
    }
    if (lineFeed) {
        WriteRaw('\n');
    }
    for (std::int32_t i = 0; i < tabs && !HasFailed(); ++i) {
        WriteRaw('\t');
    }
    return !HasFailed();
}

// The room left for text, never below 0.
std::int32_t JsonWriter::Room() const {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if ((m_Status & StatusMeasureOnly) != 0) {
        return most;
    }
    const std::int64_t available = std::int64_t{m_Capacity} - m_Cursor - 1;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(available, 0, most));
}

// At least one byte; the room has been tested.
void JsonWriter::Store(const char* text, std::uint32_t length) {
    if ((m_Status & StatusMeasureOnly) == 0) {
        std::memcpy(m_Buffer + m_Cursor, text, length);
    }
    Advance(length, text[length - 1]);
}
