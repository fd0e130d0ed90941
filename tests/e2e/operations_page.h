#pragma once

// docs/operations.md as a judge of logs: each heading that shows a log, with `<...>` for what differs.

#include <map>
#include <regex>
#include <string>
#include <vector>

namespace e2e {

class OperationsPage {
  public:
    OperationsPage();

    // Whether the lines shown under the heading stand in the log, one after another.
    bool Shows(const std::string& heading, const std::vector<std::string>& log) const;
    // The headings whose lines are how this log ends.
    std::vector<std::string> Verdicts(const std::vector<std::string>& log) const;

  private:
    using Patterns = std::vector<std::regex>;
    std::map<std::string, Patterns> m_Patterns;
};

}  // namespace e2e
