#pragma once

// For tests only: makes a call of the layer fail, or something happen just before it; or an allocation of the program
// fail.

#include <functional>

#include "platform/posix/windows_types.h"

namespace platform_testing {

// The call of this name that comes after `skip` more calls of it fails with the last error `code`, once, and without
// doing anything (a call that returns its error returns `code`). Any thread; faults for one name queue up.
void FailCall(const char* name, DWORD code, int skip = 0);

// The thread that makes the next call of this name runs `action` first; the call then goes its way. Counts as a fault.
void RunBefore(const char* name, std::function<void()> action);

// How many faults have not happened yet.
int PendingFaultCount();

// Forgets all faults that have not happened.
void ClearFaults();

// How many handles (events, waits, pipes, files, snapshots, processes) are open.
int OpenHandleCount();

// How many allocations the program has made from its entry on; 0 in a program without the layer's `main`.
int AllocationCount();

}  // namespace platform_testing

// A whole program under test gets its faults from the environment variable TOLLMERE_TEST_FAULTS: entries NAME:CODE or
// NAME:CODE:SKIP, separated by commas. TOLLMERE_TEST_FAIL_ALLOCATION is the number of the allocation, counted from 1,
// that fails: any operator `new` of the program, on whatever thread. The layer's own and those before the entry don't
// count. At its end the program writes three numbers into the file that TOLLMERE_TEST_REPORT names, if it names one:
// PendingFaultCount, OpenHandleCount and AllocationCount.
