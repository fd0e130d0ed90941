#include "telemetry/json/json_scan.h"

#include "telemetry/json/json_tables.h"

namespace {

constexpr std::int32_t kNotFound = -1;

bool IsInside(std::int32_t position, std::uint32_t length) {
    return position >= 0 && static_cast<std::uint32_t>(position) < length;
}

// Whether there is text at `position`.
bool HasByte(const char* text, std::int32_t position, std::uint32_t length) {
    return IsInside(position, length) && text[position] != '\0';
}

// For the string whose opening quotation mark is at `position`. A backslash protects whatever follows it, a NUL too.
std::int32_t ScanQuoted(const char* text, std::int32_t position, std::uint32_t length) {
    bool isProtected = false;
    for (++position; IsInside(position, length); ++position) {
        if (isProtected) {
            isProtected = false;
        } else if (text[position] == '"') {
            return position + 1;
        } else if (text[position] == '\0') {
            return kNotFound;
        } else {
            isProtected = text[position] == '\\';
        }
    }
    return kNotFound;
}

}  // namespace

std::int32_t SkipSpace(const char* text, std::int32_t position, std::uint32_t length) {
    for (; HasByte(text, position, length); ++position) {
        if (!HasClass(text[position], ClassSpace)) return position;
    }
    return kNotFound;
}

std::int32_t ScanScalar(const char* text, std::int32_t position, std::uint32_t length) {
    if (!HasByte(text, position, length)) return kNotFound;
    if (text[position] == '"') return ScanQuoted(text, position, length);
    do {
        ++position;
    } while (HasByte(text, position, length) && !IsStructural(text[position]) && !HasClass(text[position], ClassSpace));
    return position;
}

std::int32_t ScanContainer(const char* text, std::int32_t position, std::uint32_t length) {
    if (!HasByte(text, position, length) || (text[position] != '{' && text[position] != '[')) return kNotFound;
    const char opener = text[position];
    const char closer = opener == '{' ? '}' : ']';
    std::int32_t level = 1;
    for (++position; HasByte(text, position, length);) {
        if (text[position] == '"') {
            position = ScanQuoted(text, position, length);
            continue;
        }
        if (text[position] == opener) ++level;
        if (text[position] == closer) --level;
        ++position;
        if (level == 0) return position;
    }
    return kNotFound;
}
