// A process for the contract tests to start: writes down how it was started, one item a line, in UTF-8, to the file
// that CONTRACT_REPORT names. The file gets its name when it is complete.

#include <string>

#include "diagnostics/text.h"
#include "platform/windows_api.h"

int main() {
    WCHAR report[kPathCapacity];
    if (GetEnvironmentVariableW(WIDE_TEXT("CONTRACT_REPORT"), report, kPathCapacity) == 0) return 1;

    std::string text;
    int count = 0;
    LPWSTR* const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; i < count; ++i) text += "argument " + WideToUtf8(arguments[i]) + "\n";
    LocalFree(arguments);
    WCHAR directory[kPathCapacity];
    GetCurrentDirectoryW(kPathCapacity, directory);
    text += "directory " + WideToUtf8(directory) + "\n";

    const WideString unfinished = WideString(report) + WIDE_TEXT(".unfinished");
    const HANDLE file =
        CreateFileW(unfinished.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    if (!WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) return 1;
    CloseHandle(file);
    return MoveFileW(unfinished.c_str(), report) ? 0 : 1;
}
