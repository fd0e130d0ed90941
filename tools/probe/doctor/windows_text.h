#pragma once

// Windows only. Free-threaded.

#include <string>
#include <string_view>

std::wstring ToWide(std::string_view utf8);

// The system's number and text for an error, on one line: "Windows says 126: ...".
std::string WindowsReason(unsigned long error);
