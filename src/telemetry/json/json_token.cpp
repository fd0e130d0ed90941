#include "telemetry/json/json_token.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "diagnostics/log.h"
#include "telemetry/json/json_scan.h"
#include "telemetry/json/json_tables.h"
#include "telemetry/json/json_utf8.h"

namespace {

bool IsOpener(char character) {
    return character == '{' || character == '[';
}

std::int32_t ScanValue(const char* text, std::int32_t position, std::uint32_t length) {
    return IsOpener(text[position]) ? ScanContainer(text, position, length) : ScanScalar(text, position, length);
}

// Makes the scalar from `start` to `end` the token's name. False if the name is empty.
bool TakeName(JsonToken& token, std::int32_t start, std::int32_t end) {
    if (token.m_Text[start] == '"') {
        ++start;
        --end;
    }
    token.m_NameOffset = start;
    token.m_NameLength = end - start;
    return token.m_NameLength > 0;
}

// Makes what stands at `position` the token's value. False if there is nothing, or nothing that ends.
bool TakeValue(JsonToken& token, std::int32_t position) {
    if (position < 0) return false;
    const std::int32_t end = ScanValue(token.m_Text, position, token.m_Length);
    token.m_ValueOffset = position;
    token.m_ValueLength = end - position;
    return end > position;
}

bool ReadToken(JsonToken& token) {
    const char* const text = token.m_Text;
    const std::int32_t start = SkipSpace(text, 0, token.m_Length);
    if (start < 0 || (IsStructural(text[start]) && !IsOpener(text[start]))) return false;
    if (!TakeValue(token, start)) return false;
    if (IsOpener(text[start])) return true;
    const std::int32_t end = start + token.m_ValueLength;
    const std::int32_t separator = SkipSpace(text, end, token.m_Length);
    if (separator < 0 || (text[separator] != '=' && text[separator] != ':')) return true;
    return TakeName(token, start, end) && TakeValue(token, SkipSpace(text, separator + 1, token.m_Length));
}

// The index of the first byte from `position` on that is neither whitespace nor a comma, or negative.
std::int32_t SkipCommas(const char* text, std::int32_t position, std::uint32_t length) {
    position = SkipSpace(text, position, length);
    while (position >= 0 && text[position] == ',') position = SkipSpace(text, position + 1, length);
    return position;
}

}  // namespace

bool ParseToken(JsonToken& token, const char* text, std::uint32_t length) {
    token = JsonToken{};
    // The offsets are signed.
    constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
    if (text == nullptr || length == 0 || length > kMost) return false;
    JsonToken read;
    read.m_Text = text;
    read.m_Length = length;
    if (!ReadToken(read)) return false;
    token = read;
    return true;
}

bool NextToken(const JsonToken& token, JsonToken& next) {
    const JsonToken from = token;
    next = JsonToken{};
    if (from.m_Text == nullptr) return false;
    std::int32_t position = SkipSpace(from.m_Text, from.m_ValueOffset + from.m_ValueLength, from.m_Length);
    if (position < 0) return false;
    switch (from.m_Text[position]) {
        case ',':
            position = SkipCommas(from.m_Text, position, from.m_Length);
            if (position < 0) return false;
            return ParseToken(next, from.m_Text + position, from.m_Length - static_cast<std::uint32_t>(position));
        case '}':
        case ']':
            return false;
        default:
            Log("Unexpected character %c at offset:%d in \"%s\"", from.m_Text[position], position, from.m_Text);
            return false;
    }
}

bool FirstChild(const JsonToken& token, JsonToken& child) {
    const JsonToken from = token;
    child = JsonToken{};
    if (from.m_Text == nullptr || from.m_ValueLength < 1 || !IsOpener(from.m_Text[from.m_ValueOffset])) return false;
    const auto inside = static_cast<std::uint32_t>(from.m_ValueOffset) + 1;
    return ParseToken(child, from.m_Text + inside, from.m_Length - inside);
}

bool FindMember(const JsonToken& token, const char* name, JsonToken& found) {
    const std::size_t length = std::strlen(name);
    JsonToken child;
    for (bool more = FirstChild(token, child); more; more = NextToken(child, child)) {
        if (child.m_NameLength >= 0 && static_cast<std::size_t>(child.m_NameLength) == length &&
            std::memcmp(child.m_Text + child.m_NameOffset, name, length) == 0) {
            found = child;
            return true;
        }
    }
    return false;
}

bool GetString(const JsonToken& token, char* buffer, std::size_t bufferSize, std::size_t* writtenLength) {
    if (writtenLength != nullptr) *writtenLength = 0;
    if (token.m_Text == nullptr) return false;
    const char* read = token.m_Text;
    std::size_t rawLength = 0;
    if (token.m_ValueOffset >= 0 && token.m_ValueLength >= 1) {
        read += token.m_ValueOffset;
        rawLength = static_cast<std::size_t>(token.m_ValueLength);
        if (*read == '"') {
            ++read;
            rawLength -= 2;
        }
    }
    if (bufferSize <= rawLength) return false;
    char* out = buffer;
    for (const char* const end = read + rawLength; read < end;) {
        if (*read != '\\') {
            *out++ = *read++;
            continue;
        }
        // Only a bare word can end in a backslash. Then what ends the word is decoded, one character, which gives one
        // character at most and so fits in the backslash's place.
        std::uint32_t codePoint = 0;
        read += 1 + DecodeEscape(read + 1, codePoint);
        out += StoreUtf8(codePoint, out);
    }
    *out = '\0';
    if (writtenLength != nullptr) *writtenLength = static_cast<std::size_t>(out - buffer);
    return true;
}

std::size_t DecodeEscape(const char* source, std::uint32_t& codePoint) {
    constexpr std::string_view kLetters = "bfnrt";
    constexpr std::string_view kCharacters = "\b\f\n\r\t";
    if (*source == 'u') {
        char digits[5] = {};
        std::size_t count = 0;
        for (; count < 4 && HasClass(source[1 + count], ClassHex); ++count) digits[count] = source[1 + count];
        codePoint = count > 0 ? static_cast<std::uint32_t>(std::strtol(digits, nullptr, 16)) : 'u';
        return 1 + count;
    }
    const auto character = static_cast<unsigned char>(*source);
    if (const std::size_t letter = kLetters.find(*source); letter != std::string_view::npos) {
        codePoint = static_cast<unsigned char>(kCharacters[letter]);
    } else {
        codePoint = character < 0x80 ? character : kNoCodePoint;
    }
    return 1;
}
