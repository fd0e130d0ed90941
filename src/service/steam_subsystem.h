#pragma once

// Answers the launcher. A message is a name and fields, separated by ":"; the launcher's strings may be quoted, ours
// are sent as they are. The process never speaks unasked:
//
//   info_request[:ID]                -> info_response:ID:STEAMID:PERSONA:TICKETLENGTH:TICKET
//   launch_request:ID:EXE:DIR:ARGS   -> launch_response:ID:PROCESSID, or failure:ID
//
// Anything else gets no answer and no line.

#include <cstdint>
#include <string>

#include "pipe/subsystem_base.h"
#include "steam/steam_api.h"

class SteamSubsystem final : public SubsystemBase {
  public:
    // `steamApi` is not owned. Its fields that the answers hold are written before the pipe exists.
    explicit SteamSubsystem(const sysSteamApi* steamApi) : m_SteamApi(steamApi) {}

    void Init() override {}
    void Shutdown() override {}
    const char* GetName() override { return "SteamSubsystem"; }
    const char* GetId() override { return "STEA"; }
    void HandleMessage(ReceivedMessage& message) override;

  private:
    void HandleInfoRequest(FieldCursor& cursor);
    void HandleLaunchRequest(FieldCursor& cursor);
    void LaunchGame(std::uint64_t requestId, const std::string& gameExe, const std::string& workingDirectory,
                    const std::string& commandLine);
    void SendInfoResponse(std::uint64_t requestId);
    void SendLaunchResponse(std::uint64_t requestId, std::uint64_t processId);
    void SendFailure(std::uint64_t requestId);

    const sysSteamApi* m_SteamApi;
};
