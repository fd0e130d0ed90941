#include "tests/telemetry/json/json_log.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "diagnostics/log.h"

static std::vector<std::string> g_Lines;

// Takes the place of the library's, which then isn't linked.
void Log(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    std::string line(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, format, arguments)), '\0');
    std::vsnprintf(line.data(), line.size() + 1, format, again);
    va_end(again);
    va_end(arguments);
    g_Lines.push_back(line);
}

std::vector<std::string> TakeLog() {
    return std::exchange(g_Lines, {});
}
