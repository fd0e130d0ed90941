#include "pipe/subsystem_base.h"

#include <cstring>

#include "diagnostics/text.h"
#include "pipe/named_pipe_server.h"

std::vector<std::unique_ptr<SubsystemBase>> g_Subsystems;

bool SubsystemBase::SendSubsystemMessage(const std::string& text) {
    const char* const id = GetId();
    const std::size_t idLength = std::strlen(id);
    const std::size_t bodyLength = std::strlen(text.c_str());
    const std::size_t length = idLength + kFrameSeparatorSize + bodyLength;

    OutgoingFrame frame;
    frame.m_Size = static_cast<std::uint32_t>(length + kFrameLengthSize);
    frame.m_Data = std::make_unique_for_overwrite<unsigned char[]>(frame.m_Size);
    for (std::uint32_t i = 0; i < kFrameLengthSize; ++i) {
        frame.m_Data[i] = static_cast<unsigned char>(length >> (8 * i));
    }
    // The formatter's terminator lands on the body's first byte.
    char* const head = reinterpret_cast<char*>(frame.m_Data.get() + kFrameLengthSize);
    FormatText(head, length, "%s:", id);
    std::memcpy(head + idLength + kFrameSeparatorSize, text.data(), bodyLength);
    return NamedPipeServer::Send(frame);
}
