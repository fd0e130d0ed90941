#include <unistd.h>

#include <cstdlib>

#include "support/system.h"

namespace support {

std::vector<std::string> Arguments(int argc, char** argv) {
    return {argv, argv + argc};
}

std::optional<std::string> Variable(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr) return std::nullopt;
    return value;
}

std::uint32_t ProcessId() {
    return static_cast<std::uint32_t>(getpid());
}

std::uint32_t ParentProcessId() {
    return static_cast<std::uint32_t>(getppid());
}

void PrepareStandardStreams() {}

}  // namespace support
