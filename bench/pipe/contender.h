#pragma once

// One of the servers that are compared, connected. One thread at a time uses an object.

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "bench/pipe/connection.h"

namespace pipe_bench {

// The frame that all contenders are asked with, always the same.
const std::string& RequestFrame();

class Contender {
  public:
    // Connects to the pipe `pipe`, with some patience: the server may have just been started. Throws
    // std::runtime_error.
    Contender(std::string name, const std::string& pipe);

    const std::string& Name() const { return m_Name; }

    // Asks once and returns the whole frame that comes. Its size is what Exchange expects from then on. Throws
    // std::system_error, and std::runtime_error if more than one frame comes.
    std::string Ask();

    // Writes `requests`, which hold `count` times RequestFrame, in one go and waits until all answers are there.
    // Returns the time from before the write to after the last read. Throws like Ask.
    std::chrono::nanoseconds Exchange(std::string_view requests, std::size_t count);

  private:
    const std::string m_Name;
    Connection m_Connection;
    std::vector<char> m_Buffer;
    std::size_t m_AnswerSize = 0;
};

}  // namespace pipe_bench
