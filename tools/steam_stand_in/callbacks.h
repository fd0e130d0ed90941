#pragma once

// The objects that the caller registered, and the pump that calls them by the script.

#include <vector>

#include "steam/steam_client_abi.h"
#include "tools/steam_stand_in/script.h"

namespace callbacks {

void Start(std::vector<script::Callback> scripted);
void Stop();  // records an error for each object that is still registered, and forgets it

void Register(CCallbackBase* object, int id);
void Unregister(CCallbackBase* object);

// Delivers what the script has for this pump. Recorded are the first pump and those that deliver.
void Pump();
unsigned PumpCount();

}  // namespace callbacks
