#pragma once

// The receivers of frames, and one frame on its way in and out.
//
// A frame is a 32-bit little-endian count of the bytes that follow it, then the receiver's id, one separator ":", and
// the message body, which is at least one byte. It has no terminator.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pipe/field_cursor.h"

inline constexpr std::uint32_t kFrameLengthSize = 4;
inline constexpr std::uint32_t kFrameSeparatorSize = 1;

// One received frame. Points into the read buffer and is valid only during HandleMessage.
struct ReceivedMessage {
    const unsigned char* m_Frame = nullptr;  // the frame's first byte, of its length field
    std::uint32_t m_Available = 0;           // bytes from there to the end of what the read delivered
    std::uint32_t m_Length = 0;              // the value of the length field
    std::uint32_t m_BodyOffset = 0;          // from m_Frame to the body
    std::uint32_t m_BodyLength = 0;
    FieldCursor m_Cursor;  // over the body, at its start
};

// One frame to be sent: a heap block that holds the whole of it.
struct OutgoingFrame {
    std::unique_ptr<unsigned char[]> m_Data;
    std::uint32_t m_Size = 0;
};

class SubsystemBase {
  public:
    virtual void Init() = 0;      // worker; once, right after the subsystem has joined g_Subsystems
    virtual void Shutdown() = 0;  // worker; once, before the object is deleted
    virtual const char* GetName() = 0;
    virtual const char* GetId() = 0;  // 1 to a few characters; asked for on every frame, both ways

    // Wait thread, one message at a time.
    virtual void HandleMessage(ReceivedMessage& message) = 0;

    virtual ~SubsystemBase() = default;

    // Wraps `text`, up to its first NUL, in a frame that bears GetId() and gives it to the pipe. False, with the pipe's
    // own line logged, if the pipe doesn't take it; the text is then lost.
    bool SendSubsystemMessage(const std::string& text);
};

// Filled by the worker before the pipe exists and emptied by it after deliveries have stopped; the wait thread only
// reads it in between.
extern std::vector<std::unique_ptr<SubsystemBase>> g_Subsystems;
