#pragma once

// The one place that knows what a frame looks like, on its way in and out.
//
// A frame is a 32-bit little-endian count of the bytes that follow it, then the receiver's id, one separator ":", and
// the message body, which is at least one byte. It has no terminator. Nothing here logs; any thread.

#include <cstdint>
#include <memory>

#include "pipe/field_cursor.h"

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

// The frame of a body, both NUL-terminated.
OutgoingFrame MakeFrame(const char* id, const char* body);

// Puts `message` on the frame that begins at `data`, its body not yet known. False if not all of it is among the
// `available` bytes.
bool ReadFrame(const unsigned char* data, std::uint32_t available, ReceivedMessage& message);

// True if the frame bears the id and has a body, which the message then knows. Only the id's own bytes are compared:
// the separator behind it may be any byte.
bool OpenFrame(ReceivedMessage& message, const char* id);

// Of the whole frame that ReadFrame has found.
std::uint32_t FrameSize(const ReceivedMessage& message);
