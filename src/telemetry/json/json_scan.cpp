#include "telemetry/json/json_scan.h"

#include <bit>

#include "telemetry/json/json_plain.h"
#include "telemetry/json/json_tables.h"

namespace {

constexpr std::int32_t kNotFound = -1;

// Whether there is text at `position`.
bool HasByte(const char* text, std::int32_t position, std::uint32_t length) {
    return position >= 0 && static_cast<std::uint32_t>(position) < length && text[position] != '\0';
}

// Which bytes a backslash protects. The backslashes come as bits, and so does whether the first byte is protected by
// the one before it; bit 16 of the result tells that of the byte behind them.
unsigned FindProtected(unsigned backslashes, unsigned first) {
    unsigned rest = backslashes & ~first;
    if ((rest & rest << 1) == 0) {
        return rest << 1 | first;
    }
    unsigned found = first;
    while (rest != 0) {
        const unsigned lowest = rest & (0u - rest);
        found |= lowest << 1;
        rest &= ~(lowest | lowest << 1);
    }
    return found;
}

// The end of the string whose opening quotation mark is before `it`, or null if it has none. A backslash protects
// whatever follows it, a NUL too.
const char* SkipQuoted(const char* it, const char* end) {
    unsigned isProtected = 0;
    for (; end - it >= 16; it += 16) {
        const __m128i bytes = Load16(it);
        isProtected = FindProtected(FindIn16(bytes, '\\'), isProtected);
        const unsigned stops = (FindIn16(bytes, '"') | FindIn16(bytes, '\0')) & ~isProtected;
        if (stops != 0) {
            it += std::countr_zero(stops);
            return *it == '"' ? it + 1 : nullptr;
        }
        isProtected >>= 16;
    }
    for (; it != end; ++it) {
        if (isProtected != 0) {
            isProtected = 0;
        } else if (*it == '"') {
            return it + 1;
        } else if (*it == '\0') {
            return nullptr;
        } else {
            isProtected = *it == '\\';
        }
    }
    return nullptr;
}

std::int32_t IndexOf(const char* found, const char* text) {
    return found == nullptr ? kNotFound : static_cast<std::int32_t>(found - text);
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
        return IndexOf(SkipQuoted(text + position + 1, text + length), text);
    }
    do {
        ++position;
    } while (HasByte(text, position, length) && !HasClass(text[position], ClassStructural | ClassSpace));
    return position;
}

std::int32_t ScanContainer(const char* text, std::int32_t position, std::uint32_t length) {
    if (!HasByte(text, position, length) || (text[position] != '{' && text[position] != '[')) {
        return kNotFound;
    }
    const char opener = text[position];
    const char closer = opener == '{' ? '}' : ']';
    const char* const end = text + length;
    std::size_t level = 1;
    for (const char* it = text + position + 1; it != end && *it != '\0';) {
        const char character = *it++;
        if (character == '"') {
            it = SkipQuoted(it, end);
            if (it == nullptr) {
                return kNotFound;
            }
        } else if (character == opener) {
            ++level;
        } else if (character == closer && --level == 0) {
            return IndexOf(it, text);
        }
    }
    return kNotFound;
}
