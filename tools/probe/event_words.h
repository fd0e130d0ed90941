#pragma once

#include <optional>
#include <string>
#include <vector>

// The event store in words: a line for each event, and behind it one for each thing that it says. Nothing if the text
// is no event store. Free-threaded.
std::optional<std::vector<std::string>> EventsInWords(const std::string& store);
