#pragma once

// The one thing of Steam that takes time before a program can serve: its library.

#include <string>

namespace pipe_bench {

// Loads the library at `path`, for the rest of the process, and has it start. Throws std::runtime_error.
void StartSteam(const std::string& path);

}  // namespace pipe_bench
