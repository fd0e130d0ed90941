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

// `position` is behind the opening quotation mark.
std::int32_t ScanQuoted(const char* text, std::int32_t position, std::uint32_t length) {
    for (; HasByte(text, position, length); ++position) {
        if (text[position] == '"') {
            return position + 1;
        }
        if (text[position] == '\\') {
            // Whatever follows belongs to the string, if there is anything.
            if (!IsInside(++position, length)) {
                break;
            }
        }
    }
    return kNotFound;
}

}  // namespace

std::int32_t SkipSpace(const char* text, std::int32_t position, std::uint32_t length) {
    while (HasByte(text, position, length)) {
        if (!HasClass(text[position], ClassSpace)) {
            return position;
        }
        ++position;
    }
    return kNotFound;
}

std::int32_t ScanScalar(const char* text, std::int32_t position, std::uint32_t length) {
    if (!HasByte(text, position, length)) {
        return kNotFound;
    }
    if (text[position] == '"') {
        return ScanQuoted(text, position + 1, length);
    }
    do {
        ++position;
    } while (HasByte(text, position, length) && !IsStructural(text[position]) && !HasClass(text[position], ClassSpace));
    return position;
}

std::int32_t ScanContainer(const char* text, std::int32_t position, std::uint32_t length) {
    if (!HasByte(text, position, length) || (text[position] != '{' && text[position] != '[')) {
        return kNotFound;
    }
    const char opener = text[position];
    const char closer = opener == '{' ? '}' : ']';
    ++position;
    std::int32_t level = 1;
    while (HasByte(text, position, length)) {
        if (text[position] == '"') {
            position = ScanScalar(text, position, length);
            if (position < 0) {
                return kNotFound;
            }
            continue;
        }
        if (text[position] == opener) {
            ++level;
        } else if (text[position] == closer && --level == 0) {
            return position + 1;
        }
        ++position;
    }
    return kNotFound;
}
