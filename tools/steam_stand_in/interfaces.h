#pragma once

#include "steam/steam_client_abi.h"

// The stand-in's one client object, through which all the others are reached. It lives as long as the DLL.
ISteamClient& TheSteamClient();
