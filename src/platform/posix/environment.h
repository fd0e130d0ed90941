#pragma once

// The process's environment. The C library's own calls are not thread-safe; the layer reads and writes it here alone.

#include <mutex>
#include <optional>
#include <string>

namespace posix_layer {

// Guards the environment. To be held where `environ` itself is used.
std::mutex& EnvironmentLock();

// Takes the lock.
std::optional<std::string> GetVariable(const char* name);

// The first of the variables that is set and not empty.
std::optional<std::string> FirstVariable(std::initializer_list<const char*> names);

}  // namespace posix_layer
