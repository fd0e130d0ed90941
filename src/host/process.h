#pragma once

#include "platform/windows_api.h"

// The whole life of the process, on the main thread: the log's name, the options, the hidden window, the worker, the
// message loop, the join, the last flush. `lpCmdLine` is the command line without the program's own name; it may be
// null. The result is the exit code: 0 whatever became of Steam, the pipe and the launcher, 1 if there was no window
// or no worker to begin with. Uncaught exceptions end the process with 3.
int RunProcess(HINSTANCE instance, const WCHAR* lpCmdLine) noexcept;
