#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// The lines that reach a log from now on, also those that stand in the log before it once the helper has begun a new
// one. Not thread-safe.
class LogFollower {
  public:
    // A log that isn't there yet is followed from its begin.
    LogFollower(std::filesystem::path log, std::filesystem::path before);

    // The whole lines that have come since, without their ends. Doesn't wait. The file is opened only if its size has
    // changed, because the helper can't write at that moment.
    std::vector<std::string> NewLines();

  private:
    enum class Reading { NotNow, AnotherFile, Done };
    Reading ReadOn(const std::filesystem::path& file);

    const std::filesystem::path m_Log;
    const std::filesystem::path m_Before;
    std::uintmax_t m_Offset = 0;  // of what has been read
    std::string m_Head;           // how the file begins, by which it is known again
    std::string m_Rest;           // of a line that isn't whole yet
};
