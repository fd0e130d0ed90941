// The eight functions that steam_api64.dll exports, and a mark. README.md tells what the stand-in does.

#include <string>
#include <type_traits>

#include "steam/steam_client_abi.h"
#include "tools/steam_stand_in/callbacks.h"
#include "tools/steam_stand_in/interfaces.h"
#include "tools/steam_stand_in/record.h"
#include "tools/steam_stand_in/script.h"
#include "tools/steam_stand_in/session.h"

namespace {

std::int32_t GiveHandle(const char* name, std::int32_t handle) {
    const std::string call = std::string("SteamAPI_Get").append(name);
    session::Enter(call);
    const std::int32_t given = script::IsRefused(name) ? 0 : handle;
    Record(call + " -> " + std::to_string(given));
    return given;
}

}  // namespace

extern "C" {

bool SteamAPI_Init() {
    return session::Init();
}

void SteamAPI_Shutdown() {
    session::Shutdown();
}

void SteamAPI_RunCallbacks() {
    callbacks::Pump();
}

void SteamAPI_RegisterCallback(CCallbackBase* callback, int callbackId) {
    callbacks::Register(callback, callbackId);
}

void SteamAPI_UnregisterCallback(CCallbackBase* callback) {
    callbacks::Unregister(callback);
}

HSteamUser SteamAPI_GetHSteamUser() {
    return GiveHandle("HSteamUser", script::kUserHandle);
}

HSteamPipe SteamAPI_GetHSteamPipe() {
    return GiveHandle("HSteamPipe", script::kPipeHandle);
}

ISteamClient* SteamClient() {
    session::Enter("SteamClient");
    const bool refused = script::IsRefused("SteamClient");
    Record(refused ? "SteamClient -> null" : "SteamClient -> object");
    return refused ? nullptr : &TheSteamClient();
}

// Never called: who looks at the file sees by it that no Steam is needed.
void SteamStandIn() {}

}  // extern "C"

// What is exported fits the types that the program calls it by.
static_assert(std::is_same_v<decltype(&SteamAPI_Init), SteamAPI_Init_t>);
static_assert(std::is_same_v<decltype(&SteamAPI_RegisterCallback), SteamAPI_RegisterCallback_t>);
static_assert(std::is_same_v<decltype(&SteamAPI_UnregisterCallback), SteamAPI_UnregisterCallback_t>);
static_assert(std::is_same_v<decltype(&SteamAPI_GetHSteamUser), SteamAPI_GetHSteamUser_t>);
static_assert(std::is_same_v<decltype(&SteamClient), SteamClient_t>);
