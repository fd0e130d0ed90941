#include "pipe/field_cursor.h"

#include <algorithm>
#include <limits>

#include "diagnostics/log.h"

namespace {

const unsigned char* GiveUp(FieldCursor& cursor, const char* reason) {
    Log("%s", reason);
    cursor.m_Position = cursor.m_Length;
    return nullptr;
}

const unsigned char* NextPlainField(FieldCursor& cursor, const unsigned char*& end) {
    const unsigned char* const first = cursor.m_Data + cursor.m_Position;
    const unsigned char* const bodyEnd = cursor.m_Data + cursor.m_Length;
    end = std::find(first, bodyEnd, ':');
    cursor.m_Position = static_cast<std::uint32_t>(end - cursor.m_Data) + (end != bodyEnd ? 1 : 0);
    return first;
}

const unsigned char* NextQuotedField(FieldCursor& cursor, const unsigned char*& end) {
    const unsigned char* const first = cursor.m_Data + cursor.m_Position + 1;
    const unsigned char* const bodyEnd = cursor.m_Data + cursor.m_Length;
    const unsigned char* quote = first;
    while (quote != bodyEnd && *quote != '"') {
        // A backslash takes the byte behind it along, if there is one.
        quote += *quote == '\\' && bodyEnd - quote > 1 ? 2 : 1;
    }
    if (quote == bodyEnd) return GiveUp(cursor, "Error - unclosed parameter quote.");

    const unsigned char* const behind = quote + 1;
    if (behind != bodyEnd && *behind != ':' && *behind != '\0') {
        return GiveUp(cursor, "Error - invalid parameter quoting.");
    }
    cursor.m_Position = static_cast<std::uint32_t>(behind - cursor.m_Data) + (behind != bodyEnd ? 1 : 0);
    end = quote;
    return first;
}

bool IsSpace(unsigned char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace

void SkipMessageName(FieldCursor& cursor) {
    const unsigned char* const bodyEnd = cursor.m_Data + cursor.m_Length;
    const unsigned char* const separator =
        std::find_if(cursor.m_Data, bodyEnd, [](unsigned char c) { return c == ':' || c == '\0'; });
    cursor.m_Position = static_cast<std::uint32_t>(separator - cursor.m_Data) + (separator != bodyEnd ? 1 : 0);
}

const unsigned char* NextField(FieldCursor& cursor, const unsigned char** end) {
    if (cursor.m_Position >= cursor.m_Length) return nullptr;
    const unsigned char* fieldEnd = nullptr;
    const bool quoted = cursor.m_Data[cursor.m_Position] == '"';
    const unsigned char* const field = quoted ? NextQuotedField(cursor, fieldEnd) : NextPlainField(cursor, fieldEnd);
    if (field != nullptr && end != nullptr) *end = fieldEnd;
    return field;
}

bool ReadStringField(FieldCursor& cursor, std::string& out) {
    const unsigned char* end = nullptr;
    const unsigned char* it = NextField(cursor, &end);
    if (it == nullptr) return false;
    out.reserve(out.size() + static_cast<std::size_t>(end - it));
    for (; it != end; ++it) {
        if (*it == '\\' && ++it == end) break;
        out += static_cast<char>(*it);
    }
    return true;
}

bool ReadNumberField(FieldCursor& cursor, std::uint64_t& value) {
    const unsigned char* end = nullptr;
    const unsigned char* it = NextField(cursor, &end);
    if (it == nullptr) return false;
    it = std::find_if_not(it, end, IsSpace);
    const bool negative = it != end && *it == '-';
    if (it != end && (*it == '-' || *it == '+')) ++it;
    const auto isDigit = [](unsigned char candidate) { return candidate >= '0' && candidate <= '9'; };
    if (it == end || !isDigit(*it)) return false;

    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t number = 0;
    bool tooLarge = false;
    for (; it != end && isDigit(*it); ++it) {
        const std::uint64_t digit = *it - std::uint64_t{'0'};
        tooLarge = tooLarge || number > (kLargest - digit) / 10;
        number = number * 10 + digit;
    }
    value = tooLarge ? kLargest : negative ? 0 - number : number;
    return true;
}
