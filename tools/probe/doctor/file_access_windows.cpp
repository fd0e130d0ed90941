#include <windows.h>

#include "tools/probe/doctor/file_access.h"
#include "tools/probe/doctor/windows_text.h"

// Opening asks for the right and makes nothing. The helper's own files are held by it for moments only.
static DWORD TryToOpen(const std::filesystem::path& path, DWORD right, DWORD flags) {
    constexpr int kTries = 50;
    constexpr DWORD kPauseMilliseconds = 20;
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    DWORD error = ERROR_SUCCESS;
    for (int i = 0; i < kTries; ++i) {
        const HANDLE handle = CreateFileW(path.c_str(), right, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr);
        error = handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
        if (error != ERROR_SHARING_VIOLATION) break;
        Sleep(kPauseMilliseconds);
    }
    return error;
}

std::string WhyNotWritable(const std::filesystem::path& file) {
    DWORD error = TryToOpen(file, FILE_APPEND_DATA, 0);
    if (error == ERROR_FILE_NOT_FOUND) {
        error = TryToOpen(file.parent_path(), FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
    }
    return error == ERROR_SUCCESS ? "" : WindowsReason(error);
}
