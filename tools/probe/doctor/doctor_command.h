#pragma once

#include "tools/probe/exit_status.h"
#include "tools/probe/options.h"

// Looks at the set-up and prints what each check says. Done, or Failure if something is wrong.
ExitStatus RunDoctor(const Options& options);
