#pragma once

// The helper's service as text, for the servers it is compared with: bytes in, answers out, no I/O. It stands on its
// own, so that the comparison is with another program and not with parts of ours. One thread at a time uses an object.

#include <cstdint>
#include <string>
#include <string_view>

namespace pipe_bench {

class Service {
  public:
    // `steamId` is decimal, `ticket` hexadecimal.
    Service(std::string_view steamId, std::string_view persona, std::string_view ticket);

    // Takes what a read delivered, however the stream was cut, and appends the answers to what is complete to
    // `answers`. False if the stream isn't made of frames; there is no way back into step.
    bool Receive(std::string_view bytes, std::string& answers);

    // Cuts what is to be written next off the front of `answers`: one answer, or, if they go together, all of them.
    static std::string_view NextWrite(std::string_view& answers, bool together);

  private:
    // Cuts whole frames off the front of `bytes` and leaves the rest. As above for the result.
    bool TakeFrames(std::string_view& bytes, std::string& answers) const;
    void Answer(std::string_view frame, std::string& answers) const;

    std::string m_Identity;  // all of an answer behind the request id
    std::string m_Pending;   // the beginning of a frame whose end hasn't come
};

}  // namespace pipe_bench
