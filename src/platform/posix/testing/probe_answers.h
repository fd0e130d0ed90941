#pragma once

// For tests only: what the token and the registry answer.

#include <optional>

#include "platform/posix/windows_types.h"

namespace platform_testing {

// Whether the process counts as a member of the Administrators group. Without a value: whether it runs as root.
void SetAdministrator(std::optional<bool> isMember);

// The value of EnableLUA in the registry. Without one the value is missing; that is how a process starts.
void SetEnableLua(std::optional<DWORD> value);

}  // namespace platform_testing
