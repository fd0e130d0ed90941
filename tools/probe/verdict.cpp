#include "tools/probe/verdict.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <string_view>

#include "operations_page.h"

namespace {

using Texts = std::vector<std::string>;

// A text of the log, as what stands between the parts that differ.
using Pattern = std::vector<std::string>;

// Not with a regular expression: the library's need stack for each byte, and a launcher may send long texts.
bool Matches(std::string_view text, const Pattern& pattern) {
    if (pattern.size() == 1) return text == pattern.front();
    if (!text.starts_with(pattern.front())) return false;
    text.remove_prefix(pattern.front().size());
    for (std::size_t i = 1; i + 1 < pattern.size(); ++i) {
        const std::size_t place = text.find(pattern[i]);
        if (place == std::string_view::npos) return false;
        text.remove_prefix(place + pattern[i].size());
    }
    return text.ends_with(pattern.back());
}

// The page writes `<...>` for what differs.
Pattern ToPattern(const std::string& line) {
    static const std::regex differs("<[a-z ]+>");
    // -1: what stands between the matches. Behind a match at the end it gives nothing.
    Pattern pattern(std::sregex_token_iterator(line.begin(), line.end(), differs, -1), {});
    if (line.ends_with('>')) pattern.emplace_back();
    return pattern;
}

// What the page shows under one heading.
struct Shown {
    std::string m_Heading;
    std::vector<Pattern> m_Lines;

    bool IsEndOf(const Texts& texts) const {
        return m_Lines.size() <= texts.size() &&
               std::equal(m_Lines.rbegin(), m_Lines.rend(), texts.rbegin(),
                          [](const Pattern& pattern, const std::string& text) { return Matches(text, pattern); });
    }
    // One past the last place that shows the lines; 0 without one.
    std::ptrdiff_t LastPlace(const Texts& texts) const {
        const auto found = std::find_end(texts.begin(), texts.end(), m_Lines.begin(), m_Lines.end(), Matches);
        return found == texts.end() ? 0 : found - texts.begin() + static_cast<std::ptrdiff_t>(m_Lines.size());
    }
};

std::vector<Shown> ReadPage() {
    std::istringstream page(kOperationsPage);
    std::vector<Shown> all;
    std::string heading;
    bool inLog = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("### ")) heading = line.substr(4);
        if (line == "```") inLog = false;
        if (inLog) all.back().m_Lines.push_back(ToPattern(line));
        if (line == "```log") {
            inLog = true;
            all.push_back({heading, {}});
        }
    }
    return all;
}

bool IsEnd(const std::string& text) {
    return text == "Process exiting with code 0." || text.find(" Aborting process with code ") != std::string::npos;
}

// The page's end without the time-out's lines, which are missing when somebody else closed the window.
bool IsClosed(const Texts& texts) {
    const Texts closed = {"SteamService :: Shutdown", "Destroying pipe...", "Process exiting with code 0."};
    return texts.size() >= closed.size() && std::equal(closed.rbegin(), closed.rend(), texts.rbegin());
}

std::string VerdictOnEnd(const std::vector<Shown>& page, const Texts& texts) {
    // One list of lines may be the end of another.
    const Shown* best = nullptr;
    for (const Shown& shown : page) {
        const bool isLonger = best == nullptr || shown.m_Lines.size() > best->m_Lines.size();
        if (isLonger && shown.IsEndOf(texts)) best = &shown;
    }
    if (best != nullptr) return best->m_Heading;
    return IsClosed(texts) ? "The end" : "An unknown end";
}

std::string LatestStage(const std::vector<Shown>& page, const Texts& texts) {
    std::string latest = "Nothing known yet";
    std::ptrdiff_t furthest = 0;
    for (const Shown& shown : page) {
        const std::ptrdiff_t place = shown.LastPlace(texts);
        if (place <= furthest) continue;
        furthest = place;
        latest = shown.m_Heading;
    }
    return latest;
}

}  // namespace

std::string VerdictOn(Texts texts) {
    static const std::vector<Shown> page = ReadPage();
    // They come behind the end of a run that found the event store damaged.
    while (!texts.empty() && texts.back().starts_with("JSON Validation Error:")) texts.pop_back();
    if (!texts.empty() && IsEnd(texts.back())) return VerdictOnEnd(page, texts);
    return LatestStage(page, texts) + " (no end: it still runs, or was killed)";
}
