#include "telemetry/json/json_string.h"

#include "telemetry/json/json_plain.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"

namespace {

constexpr std::size_t kMaxHexDigits = 4;

std::uint32_t HexValue(char digit) {
    if (HasClass(digit, ClassDigit)) {
        return static_cast<std::uint32_t>(digit - '0');
    }
    return static_cast<std::uint32_t>((digit | 0x20) - 'a') + 10;
}

// Gives the number of digits read.
std::size_t ReadHexDigits(const char* source, const char* end, std::uint32_t& value) {
    std::size_t count = 0;
    value = 0;
    while (count < kMaxHexDigits && source != end && HasClass(*source, ClassHex)) {
        value = value << 4 | HexValue(*source);
        ++source;
        ++count;
    }
    return count;
}

// Whether it only has to be protected, and stands for itself behind the backslash.
bool IsItself(char character) {
    return character == '"' || character == '\\' || character == '/';
}

}  // namespace

bool GetString(const JsonToken& token, char* buffer, std::size_t bufferSize, std::size_t* writtenLength) {
    if (writtenLength != nullptr) {
        *writtenLength = 0;
    }
    if (token.m_Text == nullptr) {
        return false;
    }
    const char* raw = token.m_Text;
    std::size_t rawLength = 0;
    if (token.m_ValueOffset >= 0 && token.m_ValueLength >= 1) {
        raw += token.m_ValueOffset;
        rawLength = static_cast<std::size_t>(token.m_ValueLength);
        if (*raw == '"') {
            ++raw;
            rawLength -= 2;
        }
    }
    if (bufferSize <= rawLength) {
        return false;
    }
    const char* const textEnd = token.m_Text + token.m_Length;
    const char* const rawEnd = raw + rawLength;
    char* out = buffer;
    for (const char* read = raw; read < rawEnd;) {
        const char* const plainEnd = CopyPlain(read, rawEnd, out);
        out += plainEnd - read;
        read = plainEnd;
        if (read == rawEnd) {
            break;
        }
        if (*read != '\\') {
            *out++ = *read++;
            continue;
        }
        if (rawEnd - read > 1 && IsItself(read[1])) {
            *out++ = read[1];
            read += 2;
            continue;
        }
        // Only a bare word can end in a backslash. Then what ends the word is decoded, one character, which
        // gives one character at most and so fits in the backslash's place.
        std::uint32_t codePoint;
        read += 1 + DecodeEscape(read + 1, textEnd, codePoint);
        out += StoreUtf8(codePoint, out);
    }
    const auto written = static_cast<std::size_t>(out - buffer);
    buffer[written] = '\0';
    if (writtenLength != nullptr) {
        *writtenLength = written;
    }
    return true;
}

std::size_t DecodeEscape(const char* source, const char* end, std::uint32_t& codePoint) {
    if (source >= end) {
        codePoint = '\0';
        return 1;
    }
    const auto character = static_cast<unsigned char>(*source);
    switch (character) {
        case 'b':
            codePoint = '\b';
            return 1;
        case 'f':
            codePoint = '\f';
            return 1;
        case 'n':
            codePoint = '\n';
            return 1;
        case 'r':
            codePoint = '\r';
            return 1;
        case 't':
            codePoint = '\t';
            return 1;
        case 'u':
            if (const std::size_t digits = ReadHexDigits(source + 1, end, codePoint); digits > 0) {
                return 1 + digits;
            }
            codePoint = 'u';
            return 1;
        default:
            codePoint = character < 0x80 ? character : kNoCodePoint;
            return 1;
    }
}
