#pragma once

#include "tools/probe/exit_status.h"
#include "tools/probe/options.h"

// Lists the runs in the helper's log, each with its verdict, shows the lines of one, or the lines that come.
ExitStatus ShowLog(const Options& options);
