#pragma once

#include <optional>
#include <string>
#include <vector>

// The event store in words: a line for each event, and behind it one for each thing that it says. Nothing if the text
// is no event store. Free-threaded.
std::optional<std::vector<std::string>> EventsInWords(const std::string& store);

// The same as one JSON object a line: date, meaning, and the data with its keys as they are. A Steam id is a text: many
// readers of JSON keep numbers in 53 bits.
std::optional<std::vector<std::string>> EventsAsJson(const std::string& store);
