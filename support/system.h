#pragma once

// What programs ask of the system they run on, the same on each. All text is UTF-8. Free-threaded.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// The arguments of the process, as a rule the program's name first. Pass main's own; where the system keeps the command
// line as one text it is split here instead, by that system's rules and without expanding `*` and `?`.
std::vector<std::string> Arguments(int argc, char** argv);

// The command line as one text. Where the system has no such thing it is put together of main's arguments,
// with the quotes that Windows would need.
std::string CommandLine(int argc, char** argv);

// The variable as it is now, also after a change made by this process; nothing if it isn't set.
std::optional<std::string> Variable(const char* name);

std::string CurrentDirectory();
// True if `path` leads to the current directory, however it is spelled.
bool IsCurrentDirectory(const std::string& path);

std::uint32_t ProcessId();
std::uint32_t ParentProcessId();  // 0 if it can't be found out

// Makes the file's content `text`, at one stroke: a reader sees the old file or the new one.
bool ReplaceFile(const std::string& path, std::string_view text);

// Adds `text` at the end of the file, which is made if need be. When this returns, every reader sees it.
bool AppendToFile(const std::string& path, std::string_view text);

// Lets standard output and error carry bytes as they are written, '\n' and UTF-8 included.
void PrepareStandardStreams();

}  // namespace support
