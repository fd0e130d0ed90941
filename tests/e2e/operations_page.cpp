#include "tests/e2e/operations_page.h"

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>

#include "support/temp_folder.h"
#include "tests/e2e/machine.h"

namespace e2e {

using Texts = std::vector<std::string>;

// The lines shown under each heading.
static std::map<std::string, std::vector<std::regex>> ReadPage() {
    std::map<std::string, std::vector<std::regex>> page;
    std::istringstream text(support::ReadAll(BinFolder() / "operations.md"));
    std::string heading;
    bool inLog = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("### ")) heading = line.substr(4);
        if (line == "```") inLog = false;
        if (inLog) {
            const std::string escaped = std::regex_replace(line, std::regex(R"([\\\[\]().*+?^$|{}])"), R"(\$&)");
            page[heading].emplace_back(std::regex_replace(escaped, std::regex("<[a-z ]+>"), ".*"));
        }
        if (line == "```log") inLog = true;
    }
    return page;
}

static Texts Headings(const Texts& log, bool atTheEnd) {
    const auto matches = [](const std::string& line, const std::regex& shown) { return std::regex_match(line, shown); };
    Texts headings;
    for (const auto& [heading, lines] : ReadPage()) {
        const auto last = std::find_end(log.begin(), log.end(), lines.begin(), lines.end(), matches);
        if (last == log.end()) continue;
        const bool isTheEnd = log.end() - last == static_cast<std::ptrdiff_t>(lines.size());
        if (isTheEnd || !atTheEnd) headings.push_back(heading);
    }
    return headings;
}

Texts HeadingsShownBy(const Texts& log) {
    return Headings(log, false);
}

Texts VerdictsOn(const Texts& log) {
    return Headings(log, true);
}

}  // namespace e2e
