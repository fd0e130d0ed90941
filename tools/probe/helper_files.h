#pragma once

// The files that the helper leaves behind. Free-threaded.

#include <string>

#include "tools/probe/exit_status.h"

// Each reads a whole file into `bytes`. Unless the result is Done, what is wrong has been reported.

// The log, with the one before it in front where there is one.
ExitStatus ReadLog(std::string& bytes);
ExitStatus ReadEventStore(std::string& bytes);
