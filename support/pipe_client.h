#pragma once

// The launcher's end of the pipe: bytes in, bytes out, each call with a limit of time. Not thread-safe; one
// thread at a time uses an object.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace launcher {

enum class Outcome {
    Done,
    TimedOut,
    Lost,  // the other end is gone, or was never there
};

class PipeClient {
  public:
    PipeClient();
    ~PipeClient();  // closes
    PipeClient(PipeClient&&) noexcept;
    PipeClient& operator=(PipeClient&&) noexcept;

    // One try to open `\\.\pipe\NAME`; `name` is NAME alone. False if there is no pipe or it is busy.
    bool TryOpen(const std::string& name);
    // Tries at once, and again whenever the pipe may have become free, until it works or `limit` has passed.
    bool Open(const std::string& name, std::chrono::milliseconds limit);
    // Whether the last try found a pipe, but one that serves somebody else or doesn't listen.
    bool FoundBusy() const { return m_FoundBusy; }

    // Writes all of `bytes`, or as much as goes in before the outcome is not Done.
    Outcome Write(const std::string& bytes, std::chrono::milliseconds limit);

    // Waits for at least one byte and appends what is there, up to 65,536 bytes, to `bytes`.
    Outcome Read(std::string& bytes, std::chrono::milliseconds limit);

    // Of the process that serves the pipe; 0 if it isn't open or the system doesn't tell.
    std::uint32_t ServerProcessId() const;

    void Close();
    bool IsOpen() const;

  private:
    struct Connection;
    // Waits until the pipe may be free, or `limit` has passed. False if it can't wait for that.
    static bool AwaitTurn(const std::string& name, std::chrono::milliseconds limit);

    std::unique_ptr<Connection> m_Connection;
    bool m_FoundBusy = false;
};

}  // namespace launcher
