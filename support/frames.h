#pragma once

// The text of the conversation as the launcher sees it. Pure: bytes in, results out, no I/O. Free-threaded.
//
// A frame is a length (four bytes, least significant first, not counting itself), an id, a ':' and a body. A
// body is a message name and fields, with one ':' between every two.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace launcher {

// The id that the helper's subsystem answers to.
inline constexpr std::string_view kSteamId = "STEA";

// What the helper takes in one read, and so the most that may be written at once, in bytes.
inline constexpr std::size_t kMaxWrite = 65536;

std::string MakeFrame(std::string_view body, std::string_view id = kSteamId);

struct Frame {
    std::string m_Id;
    std::string m_Body;
};

// Cuts a stream into frames, however it arrives.
class FrameReader {
  public:
    // No answer comes near this length, in bytes; a longer one says that the stream isn't made of frames.
    static constexpr std::size_t kMaxLength = 1 << 20;

    void Feed(std::string_view bytes);

    // The next whole frame; nothing when more bytes are needed, or the stream is broken.
    std::optional<Frame> Next();

    // True from a frame on that claims too much or has no ':'. There is no way back into step.
    bool IsBroken() const { return m_Broken; }

  private:
    std::string m_Bytes;
    bool m_Broken = false;
};

// `text` between quotes, with a backslash before each quote and backslash: the form in which a field may hold
// anything.
std::string QuoteField(std::string_view text);

std::string InfoRequest(std::uint64_t requestId);
// The three texts are UTF-8 and given as they are; they are quoted here.
std::string LaunchRequest(std::uint64_t requestId, std::string_view executable, std::string_view directory,
                          std::string_view arguments);

struct InfoResponse {
    std::uint64_t m_RequestId = 0;
    std::uint64_t m_SteamId = 0;
    std::string m_PersonaName;         // UTF-8; may hold colons
    std::uint32_t m_TicketLength = 0;  // bytes
    std::string m_Ticket;              // hexadecimal text, or empty
};

struct LaunchResponse {
    std::uint64_t m_RequestId = 0;
    std::uint32_t m_ProcessId = 0;
};

struct Failure {
    std::uint64_t m_RequestId = 0;
};

using Answer = std::variant<InfoResponse, LaunchResponse, Failure>;

// Nothing if `body` isn't one of the three.
std::optional<Answer> ParseAnswer(std::string_view body);

std::uint64_t RequestIdOf(const Answer& answer);

}  // namespace launcher
