#pragma once

// clients/failures.json: every way in which a start, a conversation or a launch fails. Free-threaded.

#include <string>
#include <vector>

#include "tools/probe/text_pattern.h"

struct Failure {
    std::string m_Code;
    std::string m_Text;
    std::string m_Advice;
    std::string m_Page;              // the heading of docs/operations.md; empty if the log doesn't tell this one
    std::vector<TextPattern> m_Log;  // the texts that tell it, in their order
};

// The code must be one of the file's.
const Failure& FailureOf(const std::string& code);

// What the texts of one run tell; null if they tell no failure.
const Failure* FailureIn(const std::vector<std::string>& texts);
