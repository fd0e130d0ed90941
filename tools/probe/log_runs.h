#pragma once

// The helper's log, taken apart. Free-threaded.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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
