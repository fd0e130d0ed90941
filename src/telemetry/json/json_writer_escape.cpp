// Escaping: the part of JsonWriter that turns a text into the inside of a JSON string.

#include <array>
#include <bit>

#include "diagnostics/text.h"
#include "telemetry/json/json_plain.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"
#include "telemetry/json/json_writer.h"

namespace {

constexpr std::array<char, 128> MakeEscapeLetters() {
    std::array<char, 128> letters = {};
    letters['"'] = '"';
    letters['\\'] = '\\';
    letters['\b'] = 'b';
    letters['\f'] = 'f';
    letters['\n'] = 'n';
    letters['\r'] = 'r';
    letters['\t'] = 't';
    return letters;
}

// The letter that stands for a character behind a backslash, or NUL if it has none. The slash stays as it is.
char EscapeLetter(char character) {
    static constexpr std::array<char, 128> letters = MakeEscapeLetters();
    const auto index = static_cast<unsigned char>(character);
    return index < letters.size() ? letters[index] : '\0';
}

// Escapes block after block, with one look for the characters that aren't plain, and moves `out` behind what it writes.
// There is room for two bytes for each up to `end`; what lies behind `out` there may be overwritten. Ends close to
// `end`, or at the first character without a letter.
const char* EscapeBlocks(const char* text, const char* end, char*& out) {
    while (end - text >= 32) {
        const char* const block = text;
        unsigned special = NotPlain(Load16(block));
        for (; special != 0; special &= special - 1) {
            const char* const at = block + std::countr_zero(special);
            Store16(Load16(text), out);
            out += at - text;
            text = at;
            const char letter = EscapeLetter(*at);
            if (letter == '\0') {
                return text;
            }
            *out++ = '\\';
            *out++ = letter;
            ++text;
        }
        Store16(Load16(text), out);
        out += block + 16 - text;
        text = block + 16;
    }
    return text;
}

}  // namespace

bool JsonWriter::WriteEscaped(const char* text, std::ptrdiff_t length) {
    if (length <= 0) {
        return true;
    }
    const char* const end = text + length;
    const bool escapeUnicode = (m_Options & OptionEscapeUnicode) != 0;
    for (std::size_t step = 1; text != end; text += step) {
        text = WriteCommon(text, end);
        if (text == end) {
            break;
        }
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

// Writes plain characters and those with a letter in one go, if there is room for the longest outcome. The result is
// the first one that is left, which takes the long way.
const char* JsonWriter::WriteCommon(const char* text, const char* end) {
    if (HasFailed() || (m_Status & StatusMeasureOnly) != 0 || (end - text) * 2 > Room()) {
        return text;
    }
    char* const first = m_Buffer + m_Cursor;
    char* out = first;
    text = EscapeBlocks(text, end, out);
    while (text != end) {
        const char* const plainEnd = CopyPlain(text, end, out);
        out += plainEnd - text;
        text = plainEnd;
        if (text == end) {
            break;
        }
        const char letter = EscapeLetter(*text);
        if (letter == '\0') {
            break;
        }
        *out++ = '\\';
        *out++ = letter;
        ++text;
    }
    if (out != first) {
        Advance(static_cast<std::uint32_t>(out - first), out[-1]);
    }
    return text;
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
