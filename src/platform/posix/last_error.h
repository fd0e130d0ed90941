#pragma once

#include "platform/posix/windows_calls.h"

namespace posix_layer {

// Sets the last error, and gives the result with which the call then says so.
template <class T>
T WithLastError(DWORD code, T result) {
    SetLastError(code);
    return result;
}

}  // namespace posix_layer
