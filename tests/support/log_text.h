#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace test_support {

// The texts of the lines of a log file, without time, process and thread in front. A line without exactly that prefix,
// or without CR LF at its end, fails the test that runs; an empty one is passed over.
std::vector<std::string> LogTexts(std::string_view bytes);

}  // namespace test_support
