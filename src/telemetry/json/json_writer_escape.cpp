// Escaping: the part of JsonWriter that turns a text into the inside of a JSON string.

#include "diagnostics/text.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"
#include "telemetry/json/json_writer.h"

namespace {

// The letter that stands for a character behind a backslash, or NUL if it has none. The slash stays as it is.
char EscapeLetter(char character) {
    switch (character) {
        case '"':
        case '\\':
            return character;
        case '\b':
            return 'b';
        case '\f':
            return 'f';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        default:
            return '\0';
    }
}

}  // namespace

bool JsonWriter::WriteEscaped(const char* text, std::ptrdiff_t length) {
    if (length <= 0) {
        return true;
    }
    const char* const end = text + length;
    const bool escapeUnicode = (m_Options & OptionEscapeUnicode) != 0;
    for (std::size_t step = 1; text != end; text += step) {
        const auto lead = static_cast<unsigned char>(*text);
        step = 1;
        bool written;
        if (EscapeLetter(*text) != '\0') {
            written = WriteEscapedChar(*text);
        } else if (lead > 0x80 && escapeUnicode) {
            written = WriteCodePointEscape(text, end, step);
        } else if (HasClass(*text, ClassControl)) {
            char escape[16];
            FormatText16(escape, "\\x%hhX", lead);
            written = WriteRaw(escape);
        } else {
            written = WriteRaw(*text);
        }
        if (!written) {
            return false;
        }
    }
    return true;
}

bool JsonWriter::WriteEscapedChar(char character) {
    const char letter = EscapeLetter(character);
    return letter != '\0' && WriteRaw('\\') && WriteRaw(letter);
}

// Writes the UTF-8 sequence at `text` as one escape and gives its length in bytes. An escape holds 16 bits:
// of a code point above U+FFFF the rest is lost.
bool JsonWriter::WriteCodePointEscape(const char* text, const char* end, std::size_t& length) {
    const Utf8Sequence sequence = ReadUtf8Sequence(text, end);
    length = sequence.m_Length;
    const std::uint32_t codePoint = sequence.m_CodePoint == kNoCodePoint ? 0xFFFD : sequence.m_CodePoint;
    char escape[16];
    FormatText16(escape, "\\u%.4hX", static_cast<unsigned short>(codePoint));
    return WriteRaw(escape);
}
