#include "tests/e2e/operations_page.h"

#include <algorithm>
#include <sstream>

#include "tests/support/temp_folder.h"

namespace e2e {

static bool Matches(const std::string& line, const std::regex& pattern) {
    return std::regex_match(line, pattern);
}

OperationsPage::OperationsPage() {
    std::istringstream text(test_support::ReadAll(test_support::FromUtf8(TOLLMERE_OPERATIONS_PAGE)));
    std::string heading;
    bool inLog = false;
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("### ", 0) == 0) heading = line.substr(4);
        if (line == "```") inLog = false;
        if (inLog) {
            const std::string escaped = std::regex_replace(line, std::regex(R"([\\\[\]().*+?^$|{}])"), R"(\$&)");
            m_Patterns[heading].emplace_back(std::regex_replace(escaped, std::regex("<[a-z ]+>"), ".*"));
        }
        if (line == "```log") inLog = true;
    }
}

bool OperationsPage::Shows(const std::string& heading, const std::vector<std::string>& log) const {
    const auto found = m_Patterns.find(heading);
    if (found == m_Patterns.end()) return false;
    const Patterns& lines = found->second;
    return std::search(log.begin(), log.end(), lines.begin(), lines.end(), Matches) != log.end();
}

std::vector<std::string> OperationsPage::Verdicts(const std::vector<std::string>& log) const {
    std::vector<std::string> headings;
    for (const auto& [heading, lines] : m_Patterns) {
        const bool isLongEnough = lines.size() <= log.size();
        if (isLongEnough &&
            std::equal(lines.rbegin(), lines.rend(), log.rbegin(),
                       [](const std::regex& pattern, const std::string& line) { return Matches(line, pattern); })) {
            headings.push_back(heading);
        }
    }
    return headings;
}

}  // namespace e2e
