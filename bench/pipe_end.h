#pragma once

// One end of a pipe in its barest form: calls that block, and nothing between them and the system. They have no limit
// of time; who starts a program that uses them ends it. One thread at a time uses an object.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// As large as the helper's.
inline constexpr std::size_t kPipeBufferSize = 65536;

// True if a client would get into the pipe now. Asks without opening it.
bool IsListening(const std::string& path);

class PipeEnd {
  public:
    // Each makes an end of the pipe at `path` and throws std::system_error if it can't: a client's, of a pipe that
    // listens, or a server's, which is there as soon as a client is.
    static PipeEnd Open(const std::string& path);
    static PipeEnd Serve(const std::string& path);

    ~PipeEnd();
    PipeEnd(PipeEnd&& other) noexcept;
    PipeEnd& operator=(PipeEnd&&) = delete;

    // Waits for bytes and returns how many came; 0 if the other end is gone.
    std::size_t Read(char* buffer, std::size_t size);
    // Returns when all is written; false if the other end is gone.
    bool Write(std::string_view bytes);

  private:
    explicit PipeEnd(std::intptr_t handle) : m_Handle(handle) {}

    // The system's own: a descriptor or a handle.
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t m_Handle;
};
