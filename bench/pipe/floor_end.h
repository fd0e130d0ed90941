#pragma once

// The barest server's end of a pipe, for one client: calls that block, nothing else. One thread at a time uses an
// object.

#include <cstddef>
#include <cstdint>
#include <string>

namespace pipe_bench {

class FloorEnd {
  public:
    // Makes the pipe at `path`, as PipePath gives it, and waits for the client. Throws std::system_error.
    explicit FloorEnd(const std::string& path);
    ~FloorEnd();
    FloorEnd(const FloorEnd&) = delete;
    FloorEnd& operator=(const FloorEnd&) = delete;

    // Waits for bytes; returns how many came, 0 if the client has left.
    std::size_t Read(char* buffer, std::size_t size);

    // Returns when all is written; false if the client has left.
    bool Write(const std::string& bytes);

  private:
    std::intptr_t m_Handle;  // the system's own: a descriptor or a handle
};

}  // namespace pipe_bench
