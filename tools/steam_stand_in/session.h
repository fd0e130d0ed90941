#pragma once

// Where the caller stands between SteamAPI_Init and SteamAPI_Shutdown.

#include <string>

namespace session {

// A try to start. Gives its result, and records it with what it found: the directory and the app id.
bool Init();

void Shutdown();

// To be called at the start of every other call: records an error if `call` comes before the start, after the end, or
// on another thread than the start.
void Enter(const std::string& call);

}  // namespace session
