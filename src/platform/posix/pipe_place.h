#pragma once

// Where a pipe is: a socket file, and a lock file beside it that tells a pipe that is there from what a process has
// left behind.

#include <optional>
#include <string>

namespace posix_layer {

class PipePlace {
  public:
    // Takes the place of the pipe `\\.\pipe\NAME`. Nothing, with the last error, if the name or the folder is no good
    // (ERROR_INVALID_NAME, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED) or a pipe is there already (ERROR_PIPE_BUSY).
    static std::optional<PipePlace> Take(const std::string& pipeName);

    PipePlace(PipePlace&& other) noexcept;
    PipePlace& operator=(PipePlace&&) = delete;
    ~PipePlace();  // removes both files

    // A new socket that listens here, in place of an earlier one; -1, with the last error, if there can't be one.
    int Listen();

  private:
    PipePlace(std::string socketPath, int lock) : m_SocketPath(std::move(socketPath)), m_Lock(lock) {}

    std::string m_SocketPath;
    int m_Lock;  // a descriptor; -1 after a move
};

}  // namespace posix_layer
