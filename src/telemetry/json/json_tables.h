#pragma once

// The character tables that the JSON writer, reader and validator share. Both are built at compile time.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// The classes of a character, one bit each.
inline constexpr std::uint8_t ClassControl = 1 << 0;  // 0 to 31 and 127
inline constexpr std::uint8_t ClassSpace = 1 << 1;    // tab, line feed, vertical tab, carriage return, space
inline constexpr std::uint8_t ClassEscape = 1 << 2;   // what may follow a backslash, but for u
inline constexpr std::uint8_t ClassHex = 1 << 3;
inline constexpr std::uint8_t ClassDigit = 1 << 4;

constexpr std::array<std::uint8_t, 128> MakeCharClass() {
    std::array<std::uint8_t, 128> table = {};
    const auto add = [&table](std::string_view characters, std::uint8_t bit) {
        for (const char character : characters) {
            auto& entry = table[static_cast<unsigned char>(character)];
            entry = static_cast<std::uint8_t>(entry | bit);
        }
    };
    for (std::size_t i = 0; i < 32; ++i) table[i] = ClassControl;
    table[127] = ClassControl;
    add("\t\n\v\r ", ClassSpace);
    add("\"/\\bfnrt", ClassEscape);
    add("0123456789ABCDEFabcdef", ClassHex);
    add("0123456789", ClassDigit);
    return table;
}

inline constexpr std::array<std::uint8_t, 128> CharClass = MakeCharClass();

// Turns the sum of a UTF-8 sequence into its code point: the entry for the length in bytes, less one, is subtracted.
// The sum is made by shifting left by 6 and adding each whole byte.
inline constexpr std::array<std::uint32_t, 4> Utf8Offsets = {0, 0x3080, 0xE2080, 0x3C82080};

// Whether a character has one of `classes`. From 0x80 on it has none.
constexpr bool HasClass(std::uint32_t codePoint, std::uint8_t classes) {
    return codePoint < CharClass.size() && (CharClass[codePoint] & classes) != 0;
}
constexpr bool HasClass(char character, std::uint8_t classes) {
    return HasClass(std::uint32_t{static_cast<unsigned char>(character)}, classes);
}

// Whether a character structures a text, of JSON or of the key=value form.
constexpr bool IsStructural(char character) {
    return std::string_view("{}[]=,:").find(character) != std::string_view::npos;
}
