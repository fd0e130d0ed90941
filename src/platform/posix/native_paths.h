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

}  // namespace posix_layer
