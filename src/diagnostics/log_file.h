#pragma once

// The file behind the log, and the lock that guards both. No failure is reported; it costs the text. Of the last error
// a call leaves the caller's value behind, or 0 where opening an old file or asking for the folder has succeeded with a
// code.

#include <cstdint>
#include <string_view>

#include "platform/lock.h"

// Recursive: Log, ConsiderLogFlush and FlushLog each take it.
extern RecursiveLock g_LogLock;

// The present time as a count of 100 ns.
std::int64_t PresentTicks();

// Appends `text` to the log file, which is rotated first if that is enabled and due. Without a file name it does
// nothing.
void WriteToLogFile(std::string_view text) REQUIRES(g_LogLock);

// The same for a process that has no memory: appends to the file that the last WriteToLogFile() has found, and
// allocates nothing. Before the first one it does nothing.
void AppendToKnownLogFile(std::string_view text) noexcept REQUIRES(g_LogLock);
