#pragma once

// The JSON tools beside a parser that nobody here wrote: what each of the two accepts and sees.

#include <string>
#include <vector>

bool WeAccept(const std::string& text);
bool TheyAccept(const std::string& text);

// All that the two are known to judge differently.
std::vector<std::string> NamedDifferences();

// Rids the text of these as far as they make the verdicts differ, and gives the names of those it found.
std::vector<std::string> RemoveDifferences(std::string& text);

// Whether the reader and the other parser see the same tokens in a text that both accept.
bool AreWalkedAlike(const std::string& text);
