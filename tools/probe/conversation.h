#pragma once

#include "tools/probe/exit_status.h"
#include "tools/probe/options.h"

// Opens the pipe, carries the commands out one after another up to the first that doesn't end well, and leaves.
// Answers go to standard output; what went wrong, and in the verbose mode who says what, to standard error.
ExitStatus Converse(const Options& options);
