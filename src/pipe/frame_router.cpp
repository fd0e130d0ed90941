#include "pipe/frame_router.h"

#include <cstring>

#include "pipe/subsystem_base.h"

namespace {

// A shorter rest isn't looked at, whatever the ids are.
constexpr std::uint32_t kSmallestFrame = 7;

std::uint32_t ReadLength(const unsigned char* frame) {
    return static_cast<std::uint32_t>(frame[0]) | static_cast<std::uint32_t>(frame[1]) << 8 |
           static_cast<std::uint32_t>(frame[2]) << 16 | static_cast<std::uint32_t>(frame[3]) << 24;
}

// Only the id's own bytes are compared: the separator behind it may be any byte.
SubsystemBase* FindTarget(const ReceivedMessage& message) {
    for (const auto& subsystem : g_Subsystems) {
        const char* const id = subsystem->GetId();
        const std::size_t idLength = std::strlen(id);
        constexpr std::size_t kSmallestBody = 1;
        if (message.m_Length >= idLength + kFrameSeparatorSize + kSmallestBody &&
            std::memcmp(message.m_Frame + kFrameLengthSize, id, idLength) == 0) {
            return subsystem.get();
        }
    }
    return nullptr;
}

void Deliver(SubsystemBase& target, ReceivedMessage& message) {
    const auto idLength = static_cast<std::uint32_t>(std::strlen(target.GetId()));
    message.m_BodyOffset = kFrameLengthSize + idLength + kFrameSeparatorSize;
    message.m_BodyLength = message.m_Length - idLength - kFrameSeparatorSize;
    message.m_Cursor = {message.m_Frame + message.m_BodyOffset, message.m_BodyLength, 0};
    target.HandleMessage(message);
}

}  // namespace

void RouteFrames(const unsigned char* data, unsigned int count) {
    std::uint32_t remaining = count;
    while (remaining >= kSmallestFrame) {
        ReceivedMessage message;
        message.m_Frame = data;
        message.m_Available = remaining;
        message.m_Length = ReadLength(data);
        if (message.m_Length > remaining - kFrameLengthSize) return;

        if (SubsystemBase* const target = FindTarget(message)) Deliver(*target, message);
        data += kFrameLengthSize + message.m_Length;
        remaining -= kFrameLengthSize + message.m_Length;
    }
}
