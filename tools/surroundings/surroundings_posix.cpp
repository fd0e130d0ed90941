#include <unistd.h>

#include <cstdlib>

#include "tools/surroundings/surroundings.h"

namespace surroundings {

namespace {

// Quotes `argument` so that Windows' splitting gives it back: backslashes count only before a quote.
std::string Quote(const std::string& argument) {
    if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string::npos) return argument;
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '"') quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + '"';
}

}  // namespace

std::vector<std::string> Arguments(int argc, char** argv) {
    return {argv, argv + argc};
}

std::string CommandLine(int argc, char** argv) {
    std::string line;
    for (const std::string& argument : Arguments(argc, argv)) {
        if (!line.empty()) line += ' ';
        line += Quote(argument);
    }
    return line;
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

}  // namespace surroundings
