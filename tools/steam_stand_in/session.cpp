#include "tools/steam_stand_in/session.h"

#include <thread>

#include "support/system.h"
#include "tools/steam_stand_in/callbacks.h"
#include "tools/steam_stand_in/record.h"
#include "tools/steam_stand_in/script.h"

namespace session {

namespace {

enum class Phase { NotStarted, Up, ShutDown };

Phase g_Phase = Phase::NotStarted;
std::thread::id g_Thread;

}  // namespace

bool Init() {
    if (g_Phase == Phase::Up) RecordError("SteamAPI_Init while up");
    const std::string appId = support::Variable("SteamAppId").value_or("");
    if (appId.empty()) RecordError("SteamAPI_Init without SteamAppId");

    const bool succeeds = script::InitSucceeds();
    std::string line = "SteamAPI_Init directory=" + support::CurrentDirectory();
    Record(line.append(" SteamAppId=").append(appId).append(succeeds ? " -> true" : " -> false"));
    if (succeeds) {
        g_Phase = Phase::Up;
        g_Thread = std::this_thread::get_id();
        callbacks::Start(script::Callbacks());
    }
    return succeeds;
}

void Shutdown() {
    Enter("SteamAPI_Shutdown");
    Record("SteamAPI_Shutdown pumps=" + std::to_string(callbacks::PumpCount()));
    callbacks::Stop();
    g_Phase = Phase::ShutDown;
}

void Enter(const std::string& call) {
    if (g_Phase == Phase::NotStarted) RecordError(call + " before SteamAPI_Init");
    if (g_Phase == Phase::ShutDown) RecordError(call + " after SteamAPI_Shutdown");
    if (g_Phase == Phase::Up && std::this_thread::get_id() != g_Thread) {
        RecordError(call + " on another thread than SteamAPI_Init");
    }
}

}  // namespace session
