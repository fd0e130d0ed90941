#include "telemetry/json/json_writer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "diagnostics/log.h"
#include "diagnostics/text.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"

// The letter that stands for a character behind a backslash, or NUL if it has none. The slash stays as it is.
static char EscapeLetter(char character) {
    constexpr std::string_view kCharacters = "\"\\\b\f\n\r\t";
    constexpr std::string_view kLetters = "\"\\bfnrt";
    const std::size_t found = kCharacters.find(character);
    return found == std::string_view::npos ? '\0' : kLetters[found];
}

bool JsonWriter::Begin() {
    if (m_Depth + 1 > kMaxDepth) {
        Log("Failed to Begin() - m_Depth(%d) + 1 > %d.", m_Depth, kMaxDepth);
        return Fail();
    }
    Scratch scratch;
    if (!IsNameAllowed(nullptr)) return Fail();
    if (!WriteValue(scratch, nullptr, '{')) return false;
    m_Containers = m_Containers * 2 + 1;
    ++m_Depth;
    return true;
}

bool JsonWriter::BeginArray(const char* name) {
    if (m_Depth + 1 > kMaxDepth) {
        // Not every formatter takes a null text.
        Log("Failed to BeginArray() '%s' - m_Depth(%d) + 1 > %d.", name == nullptr ? "" : name, m_Depth, kMaxDepth);
        return Fail();
    }
    Scratch scratch;
    if (!IsNameAllowed(name)) return Fail();
    if (!WriteValue(scratch, name, IsKeyValue() ? '{' : '[')) return false;
    m_Containers = m_Containers * 2;
    ++m_Depth;
    return true;
}

bool JsonWriter::End() {
    if (m_Depth <= 0) {
        Log("Failed to End() - m_Depth(%d) must be > 0.", m_Depth);
        return Fail();
    }
    const bool isObject = (m_Containers & 1) != 0;
    if (!WriteLineBreak(true, m_Depth - 1) || !WriteRaw(isObject || IsKeyValue() ? '}' : ']')) return false;
    --m_Depth;
    m_Containers >>= 1;
    return true;
}

bool JsonWriter::WriteBool(const char* name, bool value) {
    Scratch scratch;
    return IsNameAllowed(name) ? WriteValue(scratch, name, value ? "true" : "false") : Fail();
}

bool JsonWriter::WriteInt(const char* name, std::int32_t value) {
    Scratch scratch;
    return IsNameAllowed(name) ? WriteValue(scratch, name, value) : Fail();
}

bool JsonWriter::WriteUInt64(const char* name, std::uint64_t value) {
    Scratch scratch;
    return IsNameAllowed(name) ? WriteValue(scratch, name, value) : Fail();
}

bool JsonWriter::WriteString(const char* name, const char* text) {
    Scratch scratch;
    if (!IsNameAllowed(name) || text == nullptr || !WriteName(scratch, name)) return false;
    const bool isQuoted = NeedsQuotes(text);
    if (isQuoted) WriteRaw('"');
    WriteEscaped(text, static_cast<std::ptrdiff_t>(std::strlen(text)));
    if (isQuoted) WriteRaw('"');
    return !HasFailed();
}

bool JsonWriter::WriteRaw(const char* text) {
    if (HasFailed()) return false;
    const std::size_t length = std::strlen(text);
    if (length == 0) return true;
    const std::int32_t available = Available();
    if (static_cast<std::size_t>(available) < length) {
        Log("Failed to WriteRaw() - Available(%d) < len(%d).", available, static_cast<int>(length));
        return Fail();
    }
    Store(text, static_cast<std::uint32_t>(length));
    return true;
}

bool JsonWriter::WriteRaw(char character) {
    if (HasFailed()) return false;
    const std::int32_t available = Available();
    if (available < 1) {
        Log("Failed to WriteRaw() - Available(%d) <= 0.", available);
        return Fail();
    }
    Store(&character, 1);
    return true;
}

bool JsonWriter::WriteEscaped(const char* text, std::ptrdiff_t length) {
    if (length <= 0) return true;
    const char* const end = text + length;
    const bool escapeUnicode = (m_Options & OptionEscapeUnicode) != 0;
    for (std::size_t step = 1; text != end; text += step) {
        const auto byte = static_cast<unsigned char>(*text);
        step = 1;
        bool written = false;
        if (EscapeLetter(*text) != '\0') {
            written = WriteEscapedChar(*text);
        } else if (byte > 0x80 && escapeUnicode) {
            written = WriteCodePointEscape(text, end, step);
        } else if (HasClass(*text, ClassControl)) {
            char escape[16];
            FormatText(escape, sizeof escape, "\\x%hhX", byte);
            written = WriteRaw(escape);
        } else {
            written = WriteRaw(*text);
        }
        if (!written) return false;
    }
    return true;
}

bool JsonWriter::WriteEscapedChar(char character) {
    const char letter = EscapeLetter(character);
    return letter != '\0' && WriteRaw('\\') && WriteRaw(letter);
}

// Writes the UTF-8 sequence at `text` as one escape and gives its length in bytes. An escape holds 16 bits: of a code
// point above U+FFFF the rest is lost. What is too long for a sequence has no code point and is the replacement
// character.
bool JsonWriter::WriteCodePointEscape(const char* text, const char* end, std::size_t& length) {
    const Utf8Sequence sequence = ReadUtf8Sequence(text, end);
    length = sequence.m_Length;
    const std::uint32_t codePoint = sequence.m_CodePoint == kNoCodePoint ? 0xFFFD : sequence.m_CodePoint;
    char escape[16];
    FormatText(escape, sizeof escape, "\\u%.4hX", static_cast<unsigned short>(codePoint));
    return WriteRaw(escape);
}

bool JsonWriter::WriteValue(Scratch& scratch, const char* name, const char* value) {
    return StartItem(name) && FinishItem(scratch, FormatText(scratch, sizeof scratch, "%s", value));
}

bool JsonWriter::WriteValue(Scratch& scratch, const char* name, char value) {
    return StartItem(name) && FinishItem(scratch, FormatText(scratch, sizeof scratch, "%c", value));
}

bool JsonWriter::WriteValue(Scratch& scratch, const char* name, std::int32_t value) {
    return StartItem(name) && FinishItem(scratch, FormatText(scratch, sizeof scratch, "%d", value));
}

bool JsonWriter::WriteValue(Scratch& scratch, const char* name, std::uint64_t value) {
    // Each C library knows this length; the I64 of Windows is known to that one only.
    const unsigned long long number = value;
    return StartItem(name) && FinishItem(scratch, FormatText(scratch, sizeof scratch, "%llu", number));
}

bool JsonWriter::WriteName(Scratch& scratch, const char* name) {
    return StartItem(name) && FinishItem(scratch, FormatText(scratch, sizeof scratch, "%s", ""));
}

// All up to the value.
bool JsonWriter::StartItem(const char* name) {
    if (HasFailed()) return false;
    if ((m_Status & StatusNeedComma) != 0) WriteRaw(",");
    WriteLineBreak(m_Depth > 0, m_Depth);
    if (name == nullptr) return !HasFailed();
    const auto length = static_cast<std::ptrdiff_t>(std::strlen(name));
    if (IsKeyValue()) return WriteEscaped(name, length) && WriteRaw('=');
    return WriteRaw('"') && WriteEscaped(name, length) && WriteRaw('"') && WriteRaw(':');
}

// The value, from what formatting it into the scratch has given.
bool JsonWriter::FinishItem(const Scratch& scratch, int length) {
    return length >= 0 && WriteEscaped(scratch, length) ? true : Fail();
}

// A line feed and so many tabs, if OptionPretty is set and nothing has failed.
bool JsonWriter::WriteLineBreak(bool lineFeed, std::int32_t tabs) {
    if ((m_Options & OptionPretty) == 0) return !HasFailed();
    if (lineFeed) WriteRaw('\n');
    for (std::int32_t i = 0; i < tabs; ++i) WriteRaw('\t');
    return !HasFailed();
}

// Stores one byte or more, for which there is room. Whether a comma is needed goes by what was written last and not by
// the sequence of calls. In the key=value form an array opens with a brace, and the square bracket is ordinary text.
void JsonWriter::Store(const char* text, std::uint32_t length) {
    if ((m_Status & StatusMeasureOnly) == 0) {
        std::memcpy(m_Buffer + m_Cursor, text, length);
        m_Buffer[m_Cursor + length] = '\0';
    }
    m_Cursor += length;
    const char last = text[length - 1];
    const bool opens = last == '{' || (last == '[' && !IsKeyValue());
    const bool needsComma = !opens && last != ',' && last != '\t' && last != '\n' && last != '\r';
    m_Status = static_cast<std::uint8_t>(needsComma ? m_Status | StatusNeedComma : m_Status & ~StatusNeedComma);
}

bool JsonWriter::IsNameAllowed(const char* name) const {
    if (m_Depth <= 0) return true;
    const bool inObject = (m_Containers & 1) != 0;
    return inObject ? name != nullptr || IsKeyValue() : name == nullptr;
}

bool JsonWriter::NeedsQuotes(const char* text) const {
    if (!IsKeyValue()) return true;
    for (; *text != '\0'; ++text) {
        if (IsStructural(*text) || HasClass(*text, ClassSpace)) return true;
    }
    return false;
}

// The room left for text, never below 0.
std::int32_t JsonWriter::Available() const {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    if ((m_Status & StatusMeasureOnly) != 0) return kMost;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{m_Capacity} - m_Cursor - 1, 0, kMost));
}

// Always false.
bool JsonWriter::Fail() {
    m_Status |= StatusFailed;
    return false;
}
