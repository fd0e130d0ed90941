#pragma once

#include "tools/probe/exit_status.h"
#include "tools/probe/options.h"

// Shows the helper's event store in words.
ExitStatus ShowEvents(const Options& options);
