#pragma once

// Text conversion and bounded formatting. Narrow text is UTF-8, wide text is UTF-16. Nothing here logs.

#include <cstddef>
#include <string>

#include "platform/windows_api.h"

using WideString = std::basic_string<WCHAR>;

// Both take NUL-terminated text, never null. Bytes that are no UTF-8 and unpaired surrogates become U+FFFD.
std::string WideToUtf8(const WCHAR* text);
WideString Utf8ToWide(const char* text);

// The paths and directories that the platform gives and takes, the terminator included.
inline constexpr std::size_t kPathCapacity = MAX_PATH;

// Formats into `buffer` of `size` bytes. The result is the number of characters without the terminator, or -1 if the
// text doesn't fit or can't be formatted; the buffer then holds a terminated text that is of no use.
int FormatText(char* buffer, std::size_t size, const char* format, ...) PRINTF_LIKE(3, 4);
int FormatText16(char (&buffer)[16], const char* format, ...) PRINTF_LIKE(2, 3);
int FormatText32(char (&buffer)[32], const char* format, ...) PRINTF_LIKE(2, 3);

// Scans a NUL-terminated text. The result is the number of fields assigned, never negative.
int ScanText(const char* text, const char* format, ...) SCANF_LIKE(2, 3);
