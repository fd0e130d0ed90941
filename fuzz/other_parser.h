#pragma once

// The JSON tools beside a parser that nobody here wrote: what each of the two accepts and sees.

#include <string>

bool WeAccept(const std::string& text);
bool TheyAccept(const std::string& text);

// Rids a well-formed text of all that the two are known to judge differently, as far as it makes their verdicts differ.
void RemoveDifferences(std::string& text);

// Whether the reader and the other parser see the same tokens, and decode the same strings, in a text that both accept.
bool AreWalkedAlike(const std::string& text);
