#include "tools/probe/log_runs.h"

#include <charconv>
#include <map>
#include <regex>

namespace {

constexpr std::size_t kBannerLength = 33;

class Splitter {
  public:
    void Take(std::string_view line) {
        std::optional<LogLine> parsed = ParseLogLine(line);
        if (!parsed) {
            if (m_Latest < m_Runs.size() && !line.empty()) m_Runs[m_Latest].m_Lines.emplace_back(line);
            return;
        }
        LogRun& run = RunOf(parsed->m_ProcessId, parsed->m_Text == std::string(kBannerLength, '\\'));
        if (run.m_Begin.empty()) run.m_Begin = parsed->m_Time;
        run.m_End = std::move(parsed->m_Time);
        run.m_Lines.emplace_back(line);
        run.m_Texts.push_back(std::move(parsed->m_Text));
    }

    std::vector<LogRun> Runs() && { return std::move(m_Runs); }

  private:
    // A process's id comes back some day, with a banner.
    LogRun& RunOf(std::uint64_t processId, bool isBanner) {
        const auto known = m_ByProcess.find(processId);
        if (isBanner || known == m_ByProcess.end()) {
            m_ByProcess[processId] = m_Runs.size();
            m_Runs.push_back({processId, isBanner, {}, {}, {}, {}});
        }
        m_Latest = m_ByProcess[processId];
        return m_Runs[m_Latest];
    }

    std::vector<LogRun> m_Runs;
    std::map<std::uint64_t, std::size_t> m_ByProcess;
    std::size_t m_Latest = 0;
};

}  // namespace

std::optional<LogLine> ParseLogLine(std::string_view line) {
    static const std::regex prefix(
        R"(\[(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3})\] \[ {0,5}(\d{1,10})\] \[ {0,3}([\dA-F]{1,8})\] )");
    std::cmatch parts;
    const auto atStart = std::regex_constants::match_continuous;
    if (!std::regex_search(line.data(), line.data() + line.size(), parts, prefix, atStart)) return std::nullopt;
    std::uint64_t processId = 0;
    std::from_chars(parts[2].first, parts[2].second, processId);
    return LogLine{parts[1], processId, parts[3], parts.suffix()};
}

std::vector<LogRun> SplitIntoRuns(std::string_view log) {
    Splitter splitter;
    while (!log.empty()) {
        const std::size_t end = log.find('\n');
        std::string_view line = log.substr(0, end);
        log.remove_prefix(end == std::string_view::npos ? log.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        splitter.Take(line);
    }
    return std::move(splitter).Runs();
}
