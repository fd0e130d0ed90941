#pragma once

// What differs for a test of the whole program between one platform and another.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "support/child_process.h"

namespace e2e {

// Where this program is, and beside it all that the build made.
std::filesystem::path BinFolder();

// The file name of a program of the build.
std::string ProgramFile(const std::string& name);

// Whether a test can make a call of the system fail in the helper.
extern const bool kFaultsWork;

// What a process holds.
struct Footprint {
    std::size_t handles = 0;  // or descriptors
    std::size_t privateBytes = 0;
};
Footprint FootprintOf(std::uint32_t processId);

// Ends a process that somebody else started for us. False if it doesn't run.
bool EndProcess(std::uint32_t processId);

// Takes its processors from a process for good: it holds what it holds, and does nothing more. It can still be ended.
void HoldProcess(std::uint32_t processId);

// The pipe, the files and the clock of one run of the helper.
class Machine {
  public:
    // `folder` is empty and belongs to the test. This process's own clients find the pipe and the files from now
    // on.
    explicit Machine(const std::filesystem::path& folder);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // What the helper has to be started with.
    const support::Environment& Variables() const { return m_Variables; }

    const std::filesystem::path& LogFile() const { return m_LogFile; }
    // The event store. It isn't there at first.
    const std::filesystem::path& EventFile() const { return m_EventFile; }

    // Leaves behind what tells this process that Steam runs as the process of that id, or, with 0, that it doesn't.
    // What a real Steam has left stays as it is.
    void RegisterSteam(std::uint32_t processId);

    // Moves the helper's clock where it can be moved; elsewhere time passes by itself.
    void LetPass(std::chrono::milliseconds time);
    // Takes back what no helper has noticed, so that it doesn't pass for the next one.
    void TakeBackTime();

  private:
    const std::filesystem::path m_Home;
    support::Environment m_Variables;
    std::filesystem::path m_LogFile;
    std::filesystem::path m_EventFile;
    [[maybe_unused]] int m_Clock = -1;  // the pipe to the moved clock, where there is one
};

}  // namespace e2e
