#pragma once

// Each call that can fail asks here first, by its own name, whether a test wants it to. Any thread.

#include <optional>

#include "platform/posix/windows_types.h"

namespace posix_layer {

// The code that this call of `name` is to fail with. It is then used up.
std::optional<DWORD> TakeFault(const char* name);

// True, with the code as the last error, if this call of `name` is to fail.
bool Faulted(const char* name);

}  // namespace posix_layer
