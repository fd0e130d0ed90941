#include "tests/support/log_text.h"

#include <gtest/gtest.h>

#include <regex>

namespace test_support {

namespace {

// "[2024-01-31 09:05:00.007] [  1234] [ 1A4] " at the start of a line: the process has six places, or more if it needs
// them, and the thread four.
const std::regex& Prefix() {
    static const std::regex prefix(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\] )"
                                   R"(\[(?=.{6}\]|\d{7,}\]) *\d+\] \[(?=.{4}\]|[\dA-F]{5,}\]) *[\dA-F]+\] )");
    return prefix;
}

}  // namespace

std::vector<std::string> LogTexts(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find("\r\n");
        const std::string_view line = bytes.substr(0, end);
        if (end == std::string_view::npos) ADD_FAILURE() << "a log line has no end: " << line;
        // The system's text for an error brings a line end of its own, and so an empty line behind it.
        if (!line.empty()) {
            std::cmatch prefix;
            const auto found = std::regex_constants::match_continuous;
            if (!std::regex_search(line.data(), line.data() + line.size(), prefix, Prefix(), found)) {
                ADD_FAILURE() << "a log line without its prefix: " << line;
            }
            texts.emplace_back(line.substr(static_cast<std::size_t>(prefix.length())));
        }
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 2);
    }
    return texts;
}

}  // namespace test_support
