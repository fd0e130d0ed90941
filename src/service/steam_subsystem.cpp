#include "service/steam_subsystem.h"

#include <cstring>
#include <string_view>

#include "diagnostics/log.h"
#include "diagnostics/text.h"
#include "service/game_launch.h"

namespace {

// By prefix: a longer name that begins with `name` counts as that message.
bool BodyStartsWith(const ReceivedMessage& message, std::string_view name) {
    return message.m_BodyLength >= name.size() &&
           std::memcmp(message.m_Frame + message.m_BodyOffset, name.data(), name.size()) == 0;
}

void AppendField(std::string& text, std::uint64_t value) {
    char field[32];
    FormatText32(field, "%s%llu", ":", static_cast<unsigned long long>(value));
    text += field;
}

void AppendField(std::string& text, const char* value) {
    text += ':';
    text += value;
}

}  // namespace

void SteamSubsystem::HandleMessage(ReceivedMessage& message) {
    if (BodyStartsWith(message, "info_request")) {
        HandleInfoRequest(message.m_Cursor);
    } else if (BodyStartsWith(message, "launch_request")) {
        HandleLaunchRequest(message.m_Cursor);
    }
}

void SteamSubsystem::HandleInfoRequest(FieldCursor& cursor) {
    std::uint64_t requestId = 0;
    SkipMessageName(cursor);
    // Without a usable id it is answered all the same, with 0.
    ReadNumberField(cursor, requestId);
    SendInfoResponse(requestId);
}

void SteamSubsystem::HandleLaunchRequest(FieldCursor& cursor) {
    Log("Game launch was requested");
    std::uint64_t requestId = 0;
    std::string gameExe;
    std::string workingDirectory;
    std::string commandLine;
    SkipMessageName(cursor);
    if (ReadNumberField(cursor, requestId) && ReadStringField(cursor, gameExe) &&
        ReadStringField(cursor, workingDirectory) && ReadStringField(cursor, commandLine)) {
        LaunchGame(requestId, gameExe, workingDirectory, commandLine);
    } else {
        SendFailure(requestId);
    }
}

void SteamSubsystem::LaunchGame(std::uint64_t requestId, const std::string& gameExe,
                                const std::string& workingDirectory, const std::string& commandLine) {
    DWORD processId = 0;
    if (StartGame(gameExe, workingDirectory, commandLine, processId)) {
        SendLaunchResponse(requestId, processId);
    } else {
        SendFailure(requestId);
    }
}

void SteamSubsystem::SendInfoResponse(std::uint64_t requestId) {
    std::string text;
    // Of the texts, and more than the name and the numbers take.
    text.reserve(std::strlen(m_SteamApi->m_PersonaName) + std::strlen(m_SteamApi->m_TicketText) + 128);
    text += "info_response";
    AppendField(text, requestId);
    AppendField(text, m_SteamApi->m_SteamId);
    AppendField(text, m_SteamApi->m_PersonaName);
    AppendField(text, m_SteamApi->m_TicketLength);
    AppendField(text, m_SteamApi->m_TicketText);
    SendSubsystemMessage(text);
}

void SteamSubsystem::SendLaunchResponse(std::uint64_t requestId, std::uint64_t processId) {
    std::string text = "launch_response";
    AppendField(text, requestId);
    AppendField(text, processId);
    SendSubsystemMessage(text);
}

void SteamSubsystem::SendFailure(std::uint64_t requestId) {
    std::string text = "failure";
    AppendField(text, requestId);
    SendSubsystemMessage(text);
}
