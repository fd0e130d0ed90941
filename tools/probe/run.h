#pragma once

#include <string>
#include <vector>

#include "tools/probe/exit_status.h"

// The whole program. `arguments` begins with the program's name.
ExitStatus RunProbe(const std::vector<std::string>& arguments);
