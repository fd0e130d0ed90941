#include "diagnostics/log.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include "diagnostics/last_error.h"
#include "diagnostics/log_file.h"
#include "diagnostics/text.h"
#include "platform/no_destructor.h"
#include "platform/time_out.h"

namespace {

constexpr std::int64_t kFlushIntervalTicks = 100'000'000;  // 10 s
constexpr ULONG kFlushTimerMilliseconds = 10'000;

constexpr int kEmergencyTries = 100;  // of 1 ms each

constexpr std::size_t kLineLimit = 2048;
constexpr std::size_t kLineEnd = 2;  // CR and LF

// The flush timer may still run on a wait thread while the process's statics go, so nothing of this is destroyed.
NoDestructor<std::string> g_LogBuffer GUARDED_BY(g_LogLock);
std::int64_t g_LastLogFlushTicks GUARDED_BY(g_LogLock) = 0;
NoDestructor<OwnedEvent> g_LogFlushEvent GUARDED_BY(g_LogLock);  // INVALID_HANDLE_VALUE: none
NoDestructor<OwnedWait> g_LogFlushWait GUARDED_BY(g_LogLock);    // INVALID_HANDLE_VALUE: none

using Line = char[kLineLimit + 1];

// Formats the line into `line`, CR LF and terminator included, and gives its length without the terminator. A text that
// is too long is cut, never its line end.
std::size_t FormatLine(Line& line, const char* format, va_list arguments) {
    SYSTEMTIME time;
    GetLocalTime(&time);
    const int prefix = FormatText(line, kLineLimit, "[%4d-%02d-%02d %02d:%02d:%02d.%03d] [%6d] [%4X] ", time.wYear,
                                  time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds,
                                  static_cast<int>(GetCurrentProcessId()), static_cast<unsigned>(GetCurrentThreadId()));
    char* const start = line + prefix;
    const std::size_t room = kLineLimit - kLineEnd - static_cast<std::size_t>(prefix);
    const int length = std::vsnprintf(start, room, format, arguments);
    char* const limit = start + (length < 0 ? 0 : std::min(static_cast<std::size_t>(length), room - 1));
    // A "%c" may have put a NUL in: the text ends there, not the line.
    char* const end = std::find(start, limit, '\0');
    std::copy_n("\r\n", kLineEnd + 1, end);
    return static_cast<std::size_t>(end - line) + kLineEnd;
}

void ShowDebugger(const Line& line) {
    const KeptLastError kept;
    // No text has more units as UTF-16 than bytes as UTF-8.
    WCHAR wide[kLineLimit + 1];
    if (MultiByteToWideChar(CP_UTF8, 0, line, -1, wide, kLineLimit + 1) > 0) OutputDebugStringW(wide);
}

void CALLBACK OnLogFlushTimer(void* parameter, BOOLEAN timerOrWaitFired) noexcept;

// Writes the waiting lines if the last flush is long enough ago, else sees to it that a timer will.
void ConsiderLogFlush() {
    const LockGuard lock(g_LogLock);
    if (PresentTicks() - g_LastLogFlushTicks > kFlushIntervalTicks) {
        FlushLog();
        return;
    }
    if (*g_LogFlushWait) return;
    const KeptLastError kept;
    ArmTimeOut(*g_LogFlushEvent, *g_LogFlushWait, OnLogFlushTimer, nullptr, kFlushTimerMilliseconds);
}

void CALLBACK OnLogFlushTimer(void*, BOOLEAN) noexcept {
    const KeptLastError kept;
    const LockGuard lock(g_LogLock);
    g_LogFlushWait->Reset();
    g_LogFlushEvent->Reset();
    ConsiderLogFlush();
}

}  // namespace

void Log(const char* format, ...) {
    const LockGuard lock(g_LogLock);
    Line line;
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = FormatLine(line, format, arguments);
    va_end(arguments);

    ShowDebugger(line);
    g_LogBuffer->append(line, length);
    ConsiderLogFlush();
}

void FlushLog() {
    const LockGuard lock(g_LogLock);
    if (g_LogBuffer->empty()) return;

    WriteToLogFile(*g_LogBuffer);
    g_LogBuffer->clear();
    g_LastLogFlushTicks = PresentTicks();
}

static std::size_t FormatLastLine(Line& line, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = FormatLine(line, format, arguments);
    va_end(arguments);
    return length;
}

void LogInEmergency(const char* reason) noexcept THREAD_SAFETY(no_thread_safety_analysis) {
    // Another thread may be inside a line or a flush: it gets a bounded time to leave. The lock, once taken, is never
    // released, because the process ends.
    for (int tries = 0; !g_LogLock.TryAcquire(); ++tries) {
        if (tries == kEmergencyTries) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Line line;
    const std::size_t length = FormatLastLine(line, "Unhandled exception (%s). Aborting process with code 3.", reason);
    ShowDebugger(line);
    AppendToKnownLogFile(*g_LogBuffer);
    AppendToKnownLogFile({line, length});
}
