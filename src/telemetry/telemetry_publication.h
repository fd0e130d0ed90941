#pragma once

#include "telemetry/telemetry.h"

// Makes the two reachable for everything. Both stay alive until they are withdrawn. Main thread.
void PublishTelemetry(TelemetryHooks& hooks, ExternalTelemetrySource& source);

// Saves what is queued, if anything is, empties the queue whatever became of the save, and withdraws what is published.
// Main thread; no other may record events any more.
void SaveEventsAndWithdraw();
