#pragma once

// What the doctor says about one thing. Free-threaded.

#include <string>

struct Check {
    std::string m_Name;
    bool m_IsOk = false;
    std::string m_Code;    // of clients/failures.json; empty if all is well, or where none of them fits
    std::string m_Text;    // "ok", or what is wrong
    std::string m_Advice;  // empty if all is well
    std::string m_Detail;  // what was seen; may be empty
};

Check Healthy(const std::string& name, const std::string& detail);

// With the text and the advice of the code.
Check Failing(const std::string& name, const std::string& code, const std::string& detail);

// Of what the helper copes with, so that no start fails by it alone.
Check Wrong(const std::string& name, const std::string& text, const std::string& advice, const std::string& detail);
