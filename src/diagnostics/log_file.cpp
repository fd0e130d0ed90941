#include "diagnostics/log_file.h"

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"
#include "diagnostics/text.h"
#include "platform/no_destructor.h"
#include "platform/owners.h"

const WCHAR* g_LogFileName = WIDE_TEXT("");
std::atomic<bool> g_LogRotationEnabled = false;
RecursiveLock g_LogLock;

namespace {

constexpr std::int64_t kRotationCheckIntervalTicks = 600'000'000;
constexpr LONGLONG kRotationSize = 0x100000;

const WCHAR kLogFolder[] = WIDE_TEXT("\\Tollmere Games\\Launcher\\");

std::int64_t g_LastLogRotationCheckTicks GUARDED_BY(g_LogLock) = 0;

// Where the log was at the last flush.
NoDestructor<WideString> g_LogPath GUARDED_BY(g_LogLock);

// Moves a full log out of the way. Looks at the file's size at most once a minute.
void RotateLogIfNeeded(const WideString& path) REQUIRES(g_LogLock) {
    const std::int64_t now = PresentTicks();
    if (now - g_LastLogRotationCheckTicks < kRotationCheckIntervalTicks) return;
    g_LastLogRotationCheckTicks = now;

    OwnedFile file(
        CreateFileW(path.c_str(), FILE_READ_DATA, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return;
    LARGE_INTEGER size = {};
    GetFileSizeEx(file.Get(), &size);
    file.Reset();
    if (size.QuadPart < kRotationSize) return;

    constexpr std::size_t kExtension = 4;  // ".log"
    const WideString old = path.substr(0, path.size() - kExtension) + WIDE_TEXT(".old.txt");
    DeleteFileW(old.c_str());
    MoveFileW(path.c_str(), old.c_str());
}

void Append(const WCHAR* path, std::string_view text, KeptLastError& kept) {
    const OwnedFile file(CreateFileW(path, FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return;
    // An old file is opened with this code and is no failure that a later report should find.
    if (GetLastError() == ERROR_ALREADY_EXISTS) kept.Clear();
    if (SetFilePointer(file.Get(), 0, nullptr, FILE_END) != INVALID_SET_FILE_POINTER) {
        DWORD written = 0;
        WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
}

}  // namespace

std::int64_t PresentTicks() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

void WriteToLogFile(std::string_view text) {
    KeptLastError kept;
    OwnedTaskText folder;
    if (*g_LogFileName == 0 || SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, folder.Receive()) != S_OK) return;
    // The call succeeds and leaves this code behind in a process that impersonates nobody.
    if (GetLastError() == ERROR_NO_TOKEN) kept.Clear();
    WideString path = WideString(folder.Get()) + kLogFolder + g_LogFileName;
    g_LogPath->swap(path);
    if (g_LogRotationEnabled) RotateLogIfNeeded(*g_LogPath);
    Append(g_LogPath->c_str(), text, kept);
}

void AppendToKnownLogFile(std::string_view text) noexcept {
    KeptLastError kept;
    if (!g_LogPath->empty()) Append(g_LogPath->c_str(), text, kept);
}
