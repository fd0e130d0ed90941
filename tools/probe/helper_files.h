#pragma once

// The files that the helper leaves behind. Free-threaded.

#include <filesystem>
#include <optional>
#include <string>

#include "tools/probe/exit_status.h"

// Where the log is, or would be; nothing if the system doesn't tell.
std::optional<std::filesystem::path> LogFile();
// The log before that one.
std::filesystem::path OldLogFile(const std::filesystem::path& log);

// Each reads a whole file into `bytes`. Unless the result is Done, `problem` says what is wrong.

// The log, with the one before it in front where there is one.
ExitStatus ReadLog(std::string& bytes, std::string& problem);
ExitStatus ReadEventStore(std::string& bytes, std::string& problem);
