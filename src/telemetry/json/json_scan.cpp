#include "telemetry/json/json_scan.h"

#include "telemetry/json/json_plain.h"
#include "telemetry/json/json_tables.h"

namespace {

constexpr std::int32_t kNotFound = -1;

// Whether there is text at `position`.
bool HasByte(const char* text, std::int32_t position, std::uint32_t length) {
    return position >= 0 && static_cast<std::uint32_t>(position) < length && text[position] != '\0';
}

// The end of the string whose opening quotation mark is before `it`, or null if it has none. A backslash protects
// whatever follows it, a NUL too.
const char* SkipQuoted(const char* it, const char* end) {
    for (;;) {
        it = SkipPlain(it, end);
        if (it == end || *it == '\0') {
            return nullptr;
        }
        if (*it == '"') {
            return it + 1;
        }
        it += *it == '\\' && end - it > 1 ? 2 : 1;
    }
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
