#pragma once

// UTF-8, as lenient as the JSON tools need it: nothing tests whether a sequence is well-formed.

#include <cstddef>
#include <cstdint>

// Of a sequence of more than four bytes. It has no class.
inline constexpr std::uint32_t kNoCodePoint = 0xFFFFFFFF;

struct Utf8Sequence {
    std::uint32_t m_CodePoint;
    std::size_t m_Length;  // bytes, 1 or more
};

// Reads the byte at `text`, whatever it is, and all bytes of the form 10xxxxxx behind it, as one character. Nothing at
// or behind `end` is read; `text` must be below it.
Utf8Sequence ReadUtf8Sequence(const char* text, const char* end);

// Stores the 1 to 4 bytes of a code point and gives their number. Above U+10FFFF it stores nothing and gives 0.
std::size_t StoreUtf8(std::uint32_t codePoint, char* buffer);
