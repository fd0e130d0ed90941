#pragma once

// The one diagnostic channel of the process: no levels, no categories. Any thread may log at any time, from the first
// statement of the entry on. A line goes to the debugger at once and to the log file with the next flush, usually
// within 10 s. Failures of the log are never reported; they cost the text that was waiting.
//
// A call keeps the caller's last error, or sets it to 0 when it writes to the file (log_file.h says when). Who wants a
// code reads it before.

#include <atomic>

#include "platform/windows_api.h"

// Logs one line: local time, process and thread id, the text, CR LF. A text beyond about 2,000 bytes is cut; one with a
// NUL, from a "%c", ends there.
//
// Wide text is given as "%s" with WideToUtf8(text).c_str(). A "%ls" would go through the C runtime's locale, which
// drops the line at the first character beyond ASCII; the Linux build refuses to compile it.
void Log(const char* format, ...) PRINTF_LIKE(1, 2);

// Appends the waiting lines to the file now. With none waiting it does nothing.
void FlushLog();

// For a process that is about to end without memory: appends the waiting lines, and one that gives `reason`, to the
// file of the last flush. Allocates nothing, and gives up if another thread keeps the log for long. Keeps the log's
// lock: the process must end now.
void LogInEmergency(const char* reason) noexcept;

// The log's file name without a folder: text of static storage, set once by the entry before its first line. While it
// is empty, a flush drops the waiting lines.
extern const WCHAR* g_LogFileName;

// Whether a flush may rotate the file. Set once by the worker, read under the log's lock by any thread.
extern std::atomic<bool> g_LogRotationEnabled;
