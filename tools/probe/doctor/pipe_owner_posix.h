#pragma once

// Where a pipe is a socket. Free-threaded.

#include <cstdint>
#include <string>

// The process that has the pipe; 0 if there is no such pipe. A socket that a killed helper has left is none.
std::uint32_t PipeOwner(const std::string& name);
