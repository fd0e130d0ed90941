#pragma once

// The common steps of all items of a JsonWriter: the separator, the line break, the name, and the value, which is
// escaped like any text. Brackets and numbers go this way too.
//
// A null name is none. False, with the writer failed, if a step fails; lack of room is logged. Whether the name is
// allowed there is the caller's business.

#include <charconv>
#include <concepts>
#include <string_view>

#include "telemetry/json/json_writer.h"

// An empty value writes all but the value.
bool WriteItem(JsonWriter& writer, const char* name, std::string_view value);

bool WriteNumber(JsonWriter& writer, const char* name, std::integral auto value) {
    char digits[24];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    return WriteItem(writer, name, {digits, result.ptr});
}
