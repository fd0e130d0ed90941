#pragma once

// A text of the log with gaps for what differs. Free-threaded.

#include <string>
#include <string_view>
#include <vector>

// What stands between the gaps; one more than there are gaps, and some may be empty.
using TextPattern = std::vector<std::string>;

// `gap` is a regular expression for what stands for a gap in `text`.
TextPattern MakePattern(const std::string& text, const std::string& gap);

// Whether the whole text is of the pattern.
bool Matches(std::string_view text, const TextPattern& pattern);
