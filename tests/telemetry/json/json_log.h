#pragma once

#include <string>
#include <vector>

// The lines that the JSON tools have logged since the last call. In this program they log here and not to the file, so
// that a line can be seen whole: the log itself ends one at a NUL.
std::vector<std::string> TakeLog();
