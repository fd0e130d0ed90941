#pragma once

#include <string>
#include <vector>

// What a run came to, by the texts of its lines: a heading of docs/operations.md. Of a run without an end it is the
// stage that it had reached. Free-threaded.
std::string VerdictOn(std::vector<std::string> texts);
