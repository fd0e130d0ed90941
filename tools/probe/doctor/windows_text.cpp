#include "tools/probe/doctor/windows_text.h"

#include <windows.h>

#include "support/temp_folder.h"

std::wstring ToWide(std::string_view utf8) {
    return support::FromUtf8(std::string(utf8)).wstring();
}

std::string WindowsReason(unsigned long error) {
    wchar_t text[512];
    // Without inserts: nobody gives it what stands for %1. In one line, without its end.
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    DWORD length = FormatMessageW(kFlags, nullptr, error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] == L' ') --length;
    const std::string reason = "Windows says " + std::to_string(error);
    return length == 0 ? reason : reason + ": " + support::ToUtf8(std::wstring(text, length));
}
