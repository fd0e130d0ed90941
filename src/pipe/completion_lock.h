#pragma once

#include "platform/lock.h"

// The lock of the pipe and of all that its completions call. It is held while a completion or the time-out runs, and by
// every operation of the pipe, of its overlapped operations and of the time-out. Whoever does several of these in one
// go holds it around all of them. Recursive: completions arm and clean operations.
extern RecursiveLock g_CompletionLock;
