#pragma once

#include "telemetry/telemetry.h"

// Publishes the process's telemetry for as long as it lives; then saves what is queued, if anything is, and withdraws
// it. Main thread; no other may record events any more when it is destroyed.
class TelemetryPublication {
  public:
    TelemetryPublication();
    ~TelemetryPublication();
    TelemetryPublication(const TelemetryPublication&) = delete;
    TelemetryPublication& operator=(const TelemetryPublication&) = delete;

  private:
    // The source goes first.
    TelemetryHooks m_Hooks;
    SteamHelperTelemetry m_Source;
};
