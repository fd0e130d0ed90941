#pragma once

// The measuring end of a conversation: one request at a time, with as little as can be between the clock and the
// system.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measure.h"
#include "bench/pipe_end.h"

// Returns when the pipe at `path` listens. Throws std::runtime_error if it doesn't within ten seconds.
void WaitUntilListening(const std::string& path);

class Client {
  public:
    Client(std::string name, std::string path) : m_Name(std::move(name)), m_Path(std::move(path)) {}

    const std::string& Name() const { return m_Name; }
    const std::string& Path() const { return m_Path; }

    void Open();
    void Leave() { m_Pipe.reset(); }

    // Writes the frame and returns the one that comes, which is there until the next call. Throws std::runtime_error.
    std::string_view Ask(const std::string& frame);

  private:
    std::string m_Name;
    std::string m_Path;
    std::optional<PipeEnd> m_Pipe;
    std::vector<char> m_Buffer = std::vector<char>(kPipeBufferSize);
};

// From the pairs of name and path that begin at the argument `first`.
std::vector<Client> MakeClients(const Texts& arguments, std::size_t first);

// Always the same request.
const std::string& InfoFrame();
