#pragma once

// What the process finds out about its user and its parent. Nothing here stops anything: a failed probe gives the
// answer that changes least.

#include "diagnostics/text.h"

enum class AdminState {
    Unknown = 0,  // not yet computed
    Administrator = 1,
    Limited = 2,     // not an administrator, or unknown, and UAC isn't known to be off
    UacDisabled = 3  // not an administrator, or unknown, and UAC is off
};

// Computed by the first call and kept. Main thread only, before the worker exists. Logs nothing.
AdminState GetAdminState();

// True only if the registry says for certain that User Account Control is off.
bool IsUacDisabled();

// Writes the folder of the parent process's executable to `out`, UTF-8, without a separator at its end. False, with
// `out` untouched, if it can't be found or doesn't fit; most failures log a line.
bool GetParentProcessDirectory(char (&out)[kPathCapacity]);
