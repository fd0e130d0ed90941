#pragma once

#include "tools/probe/exit_status.h"

// Shows the helper's event store in words.
ExitStatus ShowEvents();
