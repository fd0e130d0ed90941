#pragma once

#include <chrono>
#include <cstdint>

#include "tools/probe/exit_status.h"

// Where a helper can be found without its process's id.
bool CanFindHelper();

// Asks the helper of this process id to end, or, with 0, the one that is found, and waits for its end. Reports nothing.
// The result: Done, NothingThere, NotAllowed or StillRuns.
ExitStatus EndHelper(std::uint32_t processId, std::chrono::milliseconds limit);
