#include "diagnostics/last_error.h"

#include "diagnostics/log.h"

DWORD ReportLastError(const char* message) {
    const DWORD code = GetLastError();
    SetLastError(ERROR_SUCCESS);
    if (code == ERROR_SUCCESS) return ERROR_SUCCESS;

    constexpr DWORD kUserDefaultLanguage = 0x400;
    char text[1024];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                        kUserDefaultLanguage, text, sizeof text, nullptr);

    if (message != nullptr) Log("%s", message);
    const int decimal = static_cast<int>(code);
    const unsigned hexadecimal = code;
    if (length != 0) {
        Log("Last error: %d (0x%x): %s", decimal, hexadecimal, text);
    } else {
        Log("Last error: %d (0x%x): (unknown error)", decimal, hexadecimal);
    }
    // FormatMessageA fails with a code of its own where there is no text.
    SetLastError(ERROR_SUCCESS);
    return code;
}
