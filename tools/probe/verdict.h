#pragma once

// What a run came to, by the texts of its lines. Free-threaded.

#include <string>
#include <vector>

struct RunVerdict {
    // A heading of docs/operations.md. Of a run without an end it is the stage that it had reached, and says so.
    std::string m_Text;
    std::string m_Code;  // of clients/failures.json; empty of a usual or unknown end, and without one
    bool m_HasEnd = false;
};

RunVerdict JudgeRun(std::vector<std::string> texts);

// The verdict's text alone.
std::string VerdictOn(const std::vector<std::string>& texts);
