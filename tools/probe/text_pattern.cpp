#include "tools/probe/text_pattern.h"

#include <regex>

TextPattern MakePattern(const std::string& text, const std::string& gap) {
    const std::regex differs(gap);
    TextPattern pattern;
    std::string::const_iterator from = text.begin();
    for (std::sregex_iterator found(text.begin(), text.end(), differs), end; found != end; ++found) {
        pattern.emplace_back(from, (*found)[0].first);
        from = (*found)[0].second;
    }
    pattern.emplace_back(from, text.end());
    return pattern;
}

// Not with a regular expression: the library's need stack for each byte, and a launcher may send long texts.
bool Matches(std::string_view text, const TextPattern& pattern) {
    if (pattern.size() == 1) return text == pattern.front();
    if (!text.starts_with(pattern.front())) return false;
    text.remove_prefix(pattern.front().size());
    for (std::size_t i = 1; i + 1 < pattern.size(); ++i) {
        const std::size_t place = text.find(pattern[i]);
        if (place == std::string_view::npos) return false;
        text.remove_prefix(place + pattern[i].size());
    }
    return text.ends_with(pattern.back());
}
