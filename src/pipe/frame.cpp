#include "pipe/frame.h"

#include <algorithm>
#include <cstring>

#include "diagnostics/text.h"

namespace {

constexpr std::uint32_t kLengthSize = 4;
constexpr std::uint32_t kSeparatorSize = 1;

// A length, an id and a body of one byte each, and what separates them. A shorter rest isn't looked at.
constexpr std::uint32_t kSmallestFrame = kLengthSize + 1 + kSeparatorSize + 1;

void WriteLength(unsigned char* frame, std::uint32_t length) {
    for (std::uint32_t i = 0; i < kLengthSize; ++i) frame[i] = static_cast<unsigned char>(length >> (8 * i));
}

std::uint32_t ReadLength(const unsigned char* frame) {
    std::uint32_t length = 0;
    for (std::uint32_t i = 0; i < kLengthSize; ++i) length |= static_cast<std::uint32_t>(frame[i]) << (8 * i);
    return length;
}

}  // namespace

OutgoingFrame MakeFrame(const char* id, const char* body) {
    const std::size_t headLength = std::strlen(id) + kSeparatorSize;
    const std::size_t bodyLength = std::strlen(body);
    const auto length = static_cast<std::uint32_t>(headLength + bodyLength);

    OutgoingFrame frame;
    frame.m_Size = kLengthSize + length;
    frame.m_Data = std::make_unique_for_overwrite<unsigned char[]>(frame.m_Size);
    WriteLength(frame.m_Data.get(), length);
    // The formatter's terminator lands on the body's first byte.
    char* const head = reinterpret_cast<char*>(frame.m_Data.get() + kLengthSize);
    FormatText(head, length, "%s:", id);
    std::copy_n(body, bodyLength, head + headLength);
    return frame;
}

bool ReadFrame(const unsigned char* data, std::uint32_t available, ReceivedMessage& message) {
    if (available < kSmallestFrame) return false;
    message = {};
    message.m_Frame = data;
    message.m_Available = available;
    message.m_Length = ReadLength(data);
    return message.m_Length <= available - kLengthSize;
}

bool OpenFrame(ReceivedMessage& message, const char* id) {
    constexpr std::size_t kSmallestBody = 1;
    const std::size_t idLength = std::strlen(id);
    if (message.m_Length < idLength + kSeparatorSize + kSmallestBody) return false;
    if (std::memcmp(message.m_Frame + kLengthSize, id, idLength) != 0) return false;
    message.m_BodyOffset = kLengthSize + static_cast<std::uint32_t>(idLength) + kSeparatorSize;
    message.m_BodyLength = FrameSize(message) - message.m_BodyOffset;
    message.m_Cursor = {message.m_Frame + message.m_BodyOffset, message.m_BodyLength, 0};
    return true;
}

std::uint32_t FrameSize(const ReceivedMessage& message) {
    return kLengthSize + message.m_Length;
}
