#pragma once

// The launcher's end of the pipe: bytes in, bytes out, each call with a limit of time. Not thread-safe; one
// thread at a time uses an object.

#include <chrono>
#include <cstddef>
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

    // One try to open `\\.\pipe\NAME`; `name` is NAME alone. False if there is no pipe or it serves somebody
    // else.
    bool TryOpen(const std::string& name);

    // Tries until it works or `limit` has passed, with a pause of 50 ms before each try but the very first of the
    // object, and after a Close as well. A server that makes its pipe anew is for a moment open to clients without
    // listening, and a client of that moment leaves it without a pipe.
    bool Open(const std::string& name, std::chrono::milliseconds limit);

    // Writes all of `bytes`, or as much as goes in before the outcome is not Done.
    Outcome Write(const std::string& bytes, std::chrono::milliseconds limit);

    // Waits for at least one byte and appends what is there, up to 65,536 bytes, to `bytes`.
    Outcome Read(std::string& bytes, std::chrono::milliseconds limit);

    void Close();
    bool IsOpen() const;

  private:
    struct Connection;
    void Disconnect();

    std::unique_ptr<Connection> m_Connection;
    std::chrono::steady_clock::time_point m_NextTry;  // of Open
};

}  // namespace launcher
