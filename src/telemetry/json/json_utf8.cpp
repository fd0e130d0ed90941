#include "telemetry/json/json_utf8.h"

#include "telemetry/json/json_tables.h"

Utf8Sequence ReadUtf8Sequence(const char* text, const char* end) {
    std::uint32_t sum = static_cast<unsigned char>(*text);
    std::size_t length = 1;
    for (const char* next = text + 1; next != end; ++next, ++length) {
        const auto continuation = static_cast<unsigned char>(*next);
        if ((continuation & 0xC0) != 0x80) break;
        sum = (sum << 6) + continuation;
    }
    if (length > Utf8Offsets.size()) return {kNoCodePoint, length};
    // With an ASCII byte in front this wraps around to a value above all code points; other wrong leads may give any.
    return {sum - Utf8Offsets[length - 1], length};
}

std::size_t StoreUtf8(std::uint32_t codePoint, char* buffer) {
    if (codePoint > 0x10FFFF) return 0;
    if (codePoint <= 0x7F) {
        buffer[0] = static_cast<char>(codePoint);
        return 1;
    }
    const std::size_t length = codePoint <= 0x7FF ? 2 : codePoint <= 0xFFFF ? 3 : 4;
    for (std::size_t i = length - 1; i > 0; --i, codePoint >>= 6) {
        buffer[i] = static_cast<char>(0x80 | (codePoint & 0x3F));
    }
    const std::uint32_t leadMark = 0xF0 & (0xF00 >> length);
    buffer[0] = static_cast<char>(leadMark | codePoint);
    return length;
}
