#pragma once

#include "tools/probe/exit_status.h"
#include "tools/probe/options.h"

// Asks a helper to end as if its window were closed, and waits until it has.
ExitStatus StopHelper(const Options& options);
