#pragma once

// The common steps of all items of a JsonWriter: the separator, the line break, the name, and the value,
// which is formatted into the caller's scratch buffer and then escaped like any text. Brackets and numbers go
// this way too.
//
// A null name is none. False, with the writer failed, if a step fails; lack of room is logged. Whether the
// name is allowed there is the caller's business.

#include <cstdint>

#include "telemetry/json/json_writer.h"

using JsonScratch = char[1024];

bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, const char* value);
bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, char value);
bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, std::int32_t value);
bool WriteValue(JsonWriter& writer, JsonScratch& scratch, const char* name, std::uint64_t value);

// All but the value.
bool WriteName(JsonWriter& writer, JsonScratch& scratch, const char* name);
