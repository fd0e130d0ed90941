#pragma once

// The helper's log, taken apart. Free-threaded.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A line without what stands in front.
struct LogLine {
    std::string m_Time;  // local, as it stands there
    std::uint64_t m_ProcessId = 0;
    std::string m_Thread;
    std::string m_Text;
};

// Nothing if it isn't a line of the helper: the system's text for an error can have lines of its own.
std::optional<LogLine> ParseLogLine(std::string_view line);

struct LogRun {
    std::uint64_t m_ProcessId = 0;
    bool m_HasBeginning = false;  // false if the log that it stood in is gone
    // Local times as they stand in the log.
    std::string m_Begin;
    std::string m_End;
    std::vector<std::string> m_Lines;  // as they stand in the file, without their ends
    std::vector<std::string> m_Texts;  // without what stands in front, and without the system's own further lines
};

// In the order of their beginnings. Runs that overlap are told apart by the process's id. What doesn't look like a line
// of the helper belongs to the line before it.
std::vector<LogRun> SplitIntoRuns(std::string_view log);
