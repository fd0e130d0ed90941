#pragma once

// A Windows program or library as bytes. Pure: no I/O. Free-threaded.

#include <string>
#include <string_view>
#include <vector>

struct PeFile {
    std::vector<std::string> m_Exports;  // the names that lead to something
    std::vector<std::string> m_Imports;  // the libraries that are loaded with it
};

// What is wrong, in a few words; empty if it is a file for 64 bits that can be read. Any bytes will do. If something is
// wrong, `file` holds what was read until then.
std::string ReadPeFile(std::string_view bytes, PeFile& file);
