#pragma once

// The helper's answer to the question who the user is, for the servers that it is compared with: bytes in, bytes out.
// It stands on its own, so that the comparison is with another program and not with parts of ours.

#include <string>
#include <string_view>

// One thread at a time uses an object.
class Service {
  public:
    // `steamId` is decimal, `ticket` hexadecimal.
    Service(std::string_view steamId, std::string_view persona, std::string_view ticket);

    // Takes what a read has brought, however the stream was cut. Returns the answers to what is complete; they are
    // there until the next call.
    const std::string& Receive(std::string_view bytes);

  private:
    void Answer(std::string_view request);

    std::string m_Identity;  // all of an answer behind the request's number
    std::string m_Pending;   // the beginning of a frame whose end hasn't come
    std::string m_Answers;
};
