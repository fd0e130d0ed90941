#pragma once

// A program that a test starts. One thread at a time uses an object. All text is UTF-8.

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace support {

// Variables by name; without a value the variable is not set.
using Environment = std::map<std::string, std::optional<std::string>>;

class ChildProcess {
  public:
    struct Start {
        std::filesystem::path m_Program;
        std::vector<std::string> m_Arguments;  // without the program's name
        Environment m_Changes;                 // to this process's environment
        std::filesystem::path m_Directory;
    };

    // Throws std::system_error if the program can't be started.
    explicit ChildProcess(const Start& start);
    // Kills the process if it still runs, and waits for its end.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    std::uint32_t Id() const;
    bool IsRunning();

    // The exit code; minus the signal's number if a signal ended the process. Nothing if it still runs after Limit().
    std::optional<int> WaitForExit();

    // Asks the process to end in the way its window would be asked to close, once it can be asked. False if it can't be
    // within Limit().
    bool RequestClose();

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace support
