#pragma once

// Finds where the pieces of a text end, without judging them. Beside JSON it takes bare words of any kind and the
// key=value form. Byte `position` of `text` is the first that is looked at and byte `length` - 1 the last one that may
// be; a NUL ends the text before that. `length` is below 2^31. Nothing is logged.

#include <cstdint>

// The index of the next byte that is no whitespace, or -1 if there is none.
std::int32_t SkipSpace(const char* text, std::int32_t position, std::uint32_t length);

// The index behind the quoted string or the bare word at `position`, or -1 if nothing is there or the string has no
// end. A bare word ends at whitespace and at a structural character; its first byte may be anything.
std::int32_t ScanScalar(const char* text, std::int32_t position, std::uint32_t length);

// The index behind the bracketed block that opens at `position`, or -1 if none does or it has no end. Only brackets of
// its own kind count: "{[}" is a whole block.
std::int32_t ScanContainer(const char* text, std::int32_t position, std::uint32_t length);
