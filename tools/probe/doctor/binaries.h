#pragma once

// A program and a library as the system would see them. Nothing of them is run where that can be avoided.
// Free-threaded.

#include <filesystem>
#include <string>
#include <vector>

struct ProgramLook {
    std::string m_Problem;  // why it can't be started, as far as can be told; empty if nothing is known
    std::string m_Version;  // empty if it carries none
};
// `program` is a file that is there.
ProgramLook LookAtProgram(const std::filesystem::path& program);

struct LibraryLook {
    std::string m_Problem;               // why it can't be loaded; nothing else is known then
    std::vector<std::string> m_Missing;  // of the names asked for
};
// Windows: reads the file, and has the system map it, which says its own reason. None of its code runs, so that what
// its start would refuse stays unseen. Elsewhere it is loaded, as its start is that of a stand-in.
LibraryLook LookAtLibrary(const std::filesystem::path& library, const std::vector<std::string>& names);

// The folder of this program.
std::filesystem::path OwnFolder();
// The file's name of the helper's program.
const char* HelperName();
