#pragma once

// docs/operations.md as a judge of logs: it shows a log under many a heading, with `<...>` for what differs.

#include <string>
#include <vector>

namespace e2e {

// The headings whose lines stand in the log, one after another.
std::vector<std::string> HeadingsShownBy(const std::vector<std::string>& log);

// The headings whose lines are how the log ends.
std::vector<std::string> VerdictsOn(const std::vector<std::string>& log);

}  // namespace e2e
