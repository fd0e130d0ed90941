#pragma once

// What takes time before a program can serve: the libraries that it needs, Steam's above all, and its window.

#include <string>

namespace pipe_bench {

// Loads the library at `path`, for the rest of the process, and has it start. Throws std::runtime_error.
void StartSteam(const std::string& path);

// Loads a library of the system, as the imports of a program would. Throws std::runtime_error.
void LoadSystemLibrary(const std::string& name);

// Creates a message-only window, for the rest of the process. Throws std::runtime_error, always where the system
// has no windows.
void CreateMessageWindow();

}  // namespace pipe_bench
