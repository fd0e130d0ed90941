#pragma once

#include <filesystem>
#include <string>

// Why the helper couldn't add to the file, which need not be there, in words of the system; empty if it could. Writes
// nothing and makes no file. Free-threaded.
std::string WhyNotWritable(const std::filesystem::path& file);
