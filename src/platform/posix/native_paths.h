#pragma once

// Paths of the two worlds, and what a failed system call on one means there. Any thread.

#include <string>

#include "platform/posix/windows_types.h"

namespace posix_layer {

// UTF-8, and with '/' wherever the text has a backslash.
std::string ToNativePath(LPCWSTR path);

// Where a symbolic link points; empty, with errno, if it can't be read.
std::string ReadLink(const std::string& link);

// Sets the last error to what errno means. Of a path that isn't there Windows tells apart whether its folder is
// missing.
void SetLastErrorFromErrno(const std::string& path = {});

// Windows' rule for paths of modules: one that doesn't fit is cut, with a terminator and ERROR_INSUFFICIENT_BUFFER.
// `size` is above 0. The result is the length, or `size`.
DWORD CopyPath(const std::string& path, LPWSTR buffer, DWORD size);

}  // namespace posix_layer
