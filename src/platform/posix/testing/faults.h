#pragma once

// For tests only: makes a call of the layer fail.

#include "platform/posix/windows_types.h"

namespace platform_testing {

// The call of this name that comes after `skip` more calls of it fails with the last error `code`, once, and without
// doing anything (a call that returns its error returns `code`). Any thread; faults for one name queue up.
void FailCall(const char* name, DWORD code, int skip = 0);

// How many faults have not happened yet.
int PendingFaultCount();

// Forgets all faults that have not happened.
void ClearFaults();

// How many handles (events, waits, pipes, files, snapshots, processes) are open.
int OpenHandleCount();

}  // namespace platform_testing

// A whole program under test gets its faults from the environment variable TOLLMERE_TEST_FAULTS: entries NAME:CODE or
// NAME:CODE:SKIP, separated by commas. At its end it writes into the file that TOLLMERE_TEST_REPORT names, if it does,
// the two numbers PendingFaultCount and OpenHandleCount.
