#include "tools/probe/verdict.h"

#include <algorithm>
#include <sstream>

#include "operations_page.h"
#include "tools/probe/failures.h"

namespace {

using Texts = std::vector<std::string>;

// Nobody came, or somebody closed it: for a client that is a failure, after a visit it is how it should be.
constexpr char kUsualEnd[] = "The end";

// What the page shows under one heading.
struct Shown {
    std::string m_Heading;
    std::vector<TextPattern> m_Lines;

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
        if (inLog) all.back().m_Lines.push_back(MakePattern(line, "<[a-z ]+>"));
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

RunVerdict JudgeRun(std::vector<std::string> texts) {
    static const std::vector<Shown> page = ReadPage();
    // They come behind the end of a run that found the event store damaged.
    while (!texts.empty() && texts.back().starts_with("JSON Validation Error:")) texts.pop_back();
    if (texts.empty() || !IsEnd(texts.back())) {
        return {LatestStage(page, texts) + " (no end: it still runs, or was killed)", "", false};
    }
    const Failure* const failure = FailureIn(texts);
    if (failure == nullptr) return {"An unknown end", "", true};
    return {failure->m_Page, failure->m_Page == kUsualEnd ? "" : failure->m_Code, true};
}

std::string VerdictOn(const std::vector<std::string>& texts) {
    return JudgeRun(texts).m_Text;
}
