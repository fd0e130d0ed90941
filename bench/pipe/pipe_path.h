#pragma once

// Where the system keeps the pipe of a name. Free-threaded.

#include <string>

namespace pipe_bench {

// The full path of the pipe `name`. Throws std::runtime_error if the environment doesn't say where pipes are.
std::string PipePath(const std::string& name);

}  // namespace pipe_bench
