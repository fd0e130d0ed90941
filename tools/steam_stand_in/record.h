#pragma once

#include <string>

// Adds a line to the call record. There for every reader when this returns. Without STEAM_STAND_IN_RECORD nothing is
// written.
void Record(const std::string& line);

// The same for a breach of the contract by the caller, or for a script that makes no sense: "ERROR " and `what`.
void RecordError(const std::string& what);
