#include "tests/support/log_text.h"

#include <gtest/gtest.h>

#include <cctype>

namespace test_support {

namespace {

// The length of the number at the start of `text`: blanks, then at least one digit, at least `width` in all, and
// without blanks at more than that. 0 if there is none.
std::size_t NumberLength(std::string_view text, std::size_t width, bool hexadecimal) {
    std::size_t blanks = 0;
    while (blanks < text.size() && text[blanks] == ' ') ++blanks;
    std::size_t length = blanks;
    while (length < text.size() && (std::isdigit(static_cast<unsigned char>(text[length])) != 0 ||
                                    (hexadecimal && text[length] >= 'A' && text[length] <= 'F'))) {
        ++length;
    }
    const bool fits = length > blanks && (length == width || (length > width && blanks == 0));
    return fits ? length : 0;
}

// "[2024-01-31 09:05:00.007] [  1234] [ 1A4] " up to the text; 0 if the line begins otherwise. In the pattern '9' is a
// digit, 'P' the process, 'T' the thread, anything else itself.
std::size_t PrefixLength(std::string_view line) {
    constexpr std::string_view kPattern = "[9999-99-99 99:99:99.999] [P] [T] ";
    std::size_t at = 0;
    for (const char expected : kPattern) {
        const std::string_view rest = line.substr(at);
        std::size_t length = 0;
        if (expected == 'P' || expected == 'T') {
            length = NumberLength(rest, expected == 'P' ? 6 : 4, expected == 'T');
        } else if (!rest.empty()) {
            const bool isDigit = std::isdigit(static_cast<unsigned char>(rest[0])) != 0;
            length = expected == '9' ? isDigit : rest[0] == expected;
        }
        if (length == 0) return 0;
        at += length;
    }
    return at;
}

}  // namespace

std::vector<std::string> LogTexts(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find("\r\n");
        const std::string_view line = bytes.substr(0, end);
        if (end == std::string_view::npos) ADD_FAILURE() << "a log line has no end: " << line;
        const std::size_t prefix = PrefixLength(line);
        // The system's text for an error brings a line end of its own, and so an empty line behind it.
        if (!line.empty()) {
            if (prefix == 0) ADD_FAILURE() << "a log line without its prefix: " << line;
            texts.emplace_back(line.substr(prefix));
        }
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 2);
    }
    return texts;
}

}  // namespace test_support
