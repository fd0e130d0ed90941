#pragma once

// The measuring end of a pipe: calls that block, and as little between them and the system as can be. Whoever uses it
// guards itself against an other end that falls silent. One thread at a time uses an object.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace pipe_bench {

class Connection {
  public:
    Connection() = default;
    ~Connection() { Close(); }
    Connection(Connection&& other) noexcept : m_Handle(other.m_Handle) { other.m_Handle = kNone; }
    Connection& operator=(Connection&&) = delete;

    // One try to open the pipe at `path`, as PipePath gives it. False if nobody serves it, or somebody else is served.
    bool TryOpen(const std::string& path);
    void Close();

    // Returns when all is written. Throws std::system_error.
    void Write(std::string_view bytes);

    // Waits for at least one byte; returns how many bytes came. Throws std::system_error, also when the other end is
    // gone.
    std::size_t Read(char* buffer, std::size_t size);

  private:
    // The system's own: a descriptor or a handle.
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t m_Handle = kNone;
};

}  // namespace pipe_bench
