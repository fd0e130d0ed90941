#pragma once

#include <string>

enum class PipeState {
    None,
    Waiting,  // for a client
    Busy,     // serves one, or doesn't listen
};

// Connects to nothing: whoever serves the pipe doesn't notice. `name` is what stands behind `\\.\pipe\`. Free-threaded.
PipeState LookAtPipe(const std::string& name);
