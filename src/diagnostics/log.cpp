#include "diagnostics/log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <mutex>
#include <string>

#include "diagnostics/text.h"

const WCHAR* g_LogFileName = nullptr;
std::atomic<bool> g_LogRotationEnabled = false;

namespace {

// Times are counts of 100 ns.
constexpr std::int64_t kFlushIntervalTicks = 100'000'000;
constexpr std::int64_t kRotationCheckIntervalTicks = 600'000'000;
constexpr ULONG kFlushTimerMilliseconds = 10'000;
constexpr LONGLONG kRotationSize = 0x100000;

constexpr std::size_t kLineLimit = 2048;
constexpr std::size_t kLineEnd = 2;  // CR and LF

const WCHAR kLogFolder[] = WIDE_TEXT("\\Tollmere Games\\Launcher\\");

// The lock guards everything below. Recursive: Log, ConsiderLogFlush and FlushLog each take it. Lock and buffer are
// never destroyed: the flush timer may still run on the wait thread while the process's statics go.
std::recursive_mutex& g_LogLock = *new std::recursive_mutex;
std::string& g_LogBuffer = *new std::string;

std::int64_t g_LastLogFlushTicks = 0;
std::int64_t g_LastLogRotationCheckTicks = 0;
HANDLE g_LogFlushEvent = INVALID_HANDLE_VALUE;
HANDLE g_LogFlushWait = INVALID_HANDLE_VALUE;

std::int64_t PresentTicks() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

using Line = char[kLineLimit + 1];

// Writes `value` with its digits at the end of `width` places, or in as many as it needs. The result is where it ends.
// The formatter would take longer over the numbers of the prefix than over everything else in a line.
char* PutNumber(char* out, unsigned value, unsigned base, std::ptrdiff_t width, char fill) {
    char digits[std::numeric_limits<unsigned>::digits10 + 1];
    char* first = std::end(digits);
    do {
        *--first = "0123456789ABCDEF"[value % base];
        value /= base;
    } while (value != 0);
    for (std::ptrdiff_t places = std::end(digits) - first; places < width; ++places) *out++ = fill;
    return std::copy(first, std::end(digits), out);
}

// "[2026-11-22 18:04:09.007] [  4711] [ 12C] "
char* PutPrefix(char* out) {
    SYSTEMTIME time;
    GetLocalTime(&time);
    const auto put = [&out](char before, unsigned value, std::ptrdiff_t width, char fill) {
        *out++ = before;
        out = PutNumber(out, value, 10, width, fill);
    };
    put('[', time.wYear, 4, ' ');
    put('-', time.wMonth, 2, '0');
    put('-', time.wDay, 2, '0');
    put(' ', time.wHour, 2, '0');
    put(':', time.wMinute, 2, '0');
    put(':', time.wSecond, 2, '0');
    put('.', time.wMilliseconds, 3, '0');
    out = std::copy_n("] ", 2, out);
    put('[', GetCurrentProcessId(), 6, ' ');
    out = std::copy_n("] [", 3, out);
    out = PutNumber(out, GetCurrentThreadId(), 16, 4, ' ');
    return std::copy_n("] ", 2, out);
}

// Formats the line into `line`, CR LF and terminator included, and gives its length without the terminator. A text that
// is too long is cut, never its line end.
std::size_t FormatLine(Line& line, const char* format, va_list arguments) {
    char* const start = PutPrefix(line);
    const std::size_t room = kLineLimit - kLineEnd - static_cast<std::size_t>(start - line);
    const int length = std::vsnprintf(start, room, format, arguments);
    char* const limit = start + (length < 0 ? 0 : std::min(static_cast<std::size_t>(length), room - 1));
    // A "%c" may have put a NUL in: the text ends there, not the line.
    char* const end = std::find(start, limit, '\0');
    return static_cast<std::size_t>(std::copy_n("\r\n", kLineEnd + 1, end) - 1 - line);
}

void ShowDebugger(const Line& line) {
    // No text has more units as UTF-16 than bytes as UTF-8.
    WCHAR wide[kLineLimit + 1];
    if (MultiByteToWideChar(CP_UTF8, 0, line, -1, wide, kLineLimit + 1) > 0) OutputDebugStringW(wide);
}

// Moves a full log out of the way. Looks at the file's size at most once a minute.
void RotateLogIfNeeded(const WideString& path) {
    const std::int64_t now = PresentTicks();
    if (now - g_LastLogRotationCheckTicks < kRotationCheckIntervalTicks) return;
    g_LastLogRotationCheckTicks = now;

    const HANDLE file =
        CreateFileW(path.c_str(), FILE_READ_DATA, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    CloseHandle(file);
    if (size.QuadPart < kRotationSize) return;

    constexpr std::size_t kExtension = 4;  // ".log"
    const WideString old = path.substr(0, path.size() - kExtension) + WIDE_TEXT(".old.txt");
    DeleteFileW(old.c_str());
    MoveFileW(path.c_str(), old.c_str());
}

void AppendToFile(const WideString& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    // An old file is opened with this code and is no failure that a later report should find.
    if (GetLastError() == ERROR_ALREADY_EXISTS) SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(file, 0, nullptr, FILE_END) != INVALID_SET_FILE_POINTER) {
        DWORD written = 0;
        WriteFile(file, g_LogBuffer.data(), static_cast<DWORD>(g_LogBuffer.size()), &written, nullptr);
    }
    CloseHandle(file);
}

void CALLBACK OnLogFlushTimer(void* parameter, BOOLEAN timerOrWaitFired);

// Writes the waiting lines if the last flush is long enough ago, else sees to it that a timer will.
void ConsiderLogFlush() {
    const std::lock_guard lock(g_LogLock);
    if (PresentTicks() - g_LastLogFlushTicks > kFlushIntervalTicks) {
        FlushLog();
        return;
    }
    if (g_LogFlushWait != INVALID_HANDLE_VALUE && g_LogFlushWait != nullptr) return;

    // Nothing ever signals the event: it only gives the wait something to time out on.
    g_LogFlushEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (g_LogFlushEvent == nullptr) {
        g_LogFlushEvent = INVALID_HANDLE_VALUE;
        return;
    }
    if (!RegisterWaitForSingleObject(&g_LogFlushWait, g_LogFlushEvent, OnLogFlushTimer, nullptr,
                                     kFlushTimerMilliseconds, WT_EXECUTEINWAITTHREAD | WT_EXECUTEONLYONCE)) {
        CloseHandle(g_LogFlushEvent);
        g_LogFlushEvent = INVALID_HANDLE_VALUE;
        g_LogFlushWait = INVALID_HANDLE_VALUE;
    }
}

void CALLBACK OnLogFlushTimer(void*, BOOLEAN) {
    const std::lock_guard lock(g_LogLock);
    if (g_LogFlushWait != INVALID_HANDLE_VALUE) {
        // Inside the wait's own callback an unregister must not block.
        UnregisterWaitEx(g_LogFlushWait, nullptr);
        g_LogFlushWait = INVALID_HANDLE_VALUE;
    }
    if (g_LogFlushEvent != INVALID_HANDLE_VALUE) {
        CloseHandle(g_LogFlushEvent);
        g_LogFlushEvent = INVALID_HANDLE_VALUE;
    }
    ConsiderLogFlush();
}

}  // namespace

void Log(const char* format, ...) {
    const std::lock_guard lock(g_LogLock);
    Line line;
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = FormatLine(line, format, arguments);
    va_end(arguments);

    ShowDebugger(line);
    g_LogBuffer.append(line, length);
    ConsiderLogFlush();
}

void FlushLog() {
    const std::lock_guard lock(g_LogLock);
    if (g_LogBuffer.empty()) return;

    LPWSTR folder = nullptr;
    if (g_LogFileName != nullptr && SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &folder) == S_OK) {
        // The call succeeds and leaves this code behind in a process that impersonates nobody.
        if (GetLastError() == ERROR_NO_TOKEN) SetLastError(ERROR_SUCCESS);
        const WideString path = WideString(folder) + kLogFolder + g_LogFileName;
        CoTaskMemFree(folder);
        if (g_LogRotationEnabled) RotateLogIfNeeded(path);
        AppendToFile(path);
    }
    g_LogBuffer.clear();
    g_LastLogFlushTicks = PresentTicks();
}
