#pragma once

// The decoded text of a token's value.

#include <cstddef>
#include <cstdint>

#include "telemetry/json/json_token.h"

// Decodes the value, less its quotation marks, into `buffer` and terminates it. The decoded text is never
// longer than the raw one, and `bufferSize`, in bytes, must be above that: m_ValueLength + 1 always is. Each
// \uXXXX stands alone, halves of a surrogate pair too, and \u0000 puts a NUL into the text.
//
// `writtenLength` gets the bytes written, without the terminator; it may be null. On false, for an invalid
// token or a buffer too small, it is 0 and the buffer is untouched; nothing is logged.
bool GetString(const JsonToken& token, char* buffer, std::size_t bufferSize, std::size_t* writtenLength);

// Decodes the escape sequence at `source`, behind the backslash, and gives the number of bytes read, 1 or
// more. Nothing at or behind `end` is read; the end itself counts as a NUL. A byte from 0x80 on gives a code
// point above U+10FFFF, which stands for none.
std::size_t DecodeEscape(const char* source, const char* end, std::uint32_t& codePoint);
