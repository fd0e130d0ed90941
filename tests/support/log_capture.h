#pragma once

// Lets a test read what the code under test has logged: the real log, in a folder and a file of the test's own.

#include <filesystem>
#include <string>
#include <vector>

namespace test_support {

class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The texts of the lines since the last call, without their prefix. Checks the shape of each prefix.
    std::vector<std::string> Lines();

    // Sees to it that the log's own flush timer is armed, so that it neither opens handles nor meets injected faults
    // for the next lines. Lines() leaves no trace of it.
    void ArmFlushTimer();

    // The same, as the bytes of the file; it is removed.
    std::string Bytes();

    std::filesystem::path File() const;

  private:
    std::filesystem::path m_Folder;
    std::u16string m_Name;
};

}  // namespace test_support
