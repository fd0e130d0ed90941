#pragma once

#include <charconv>
#include <CLI/CLI.hpp>
#include <string>

// A decimal number that fits: the library would also take a sign, other bases and what is too large. Throws CLI::Error.
template <class Number>
Number ReadNumber(const char* option, const std::string& text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) throw CLI::ValidationError(option, "not a number that fits");
    return number;
}
