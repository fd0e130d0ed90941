#pragma once

// The in-memory half of the telemetry: the event record, the source with its bounded queue, and the two globals through
// which everything finds them. Nothing here logs.

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/lock.h"

// Recursive: the last save takes it three levels deep.
extern RecursiveLock g_TelemetryLock;

// Holds no pointers: a plain copy moves it.
struct TelemetryEvent {
    char name[32] = {};
    char data[1024] = {};    // members of a JSON object, without its braces
    std::uint64_t time = 0;  // a FILETIME: 100 ns since 1 January 1601 UTC
};

class ExternalTelemetrySource {
  public:
    virtual const char* GetFileName() = 0;  // of the store, without a folder
    virtual std::int32_t GetMaxEvents() = 0;
    virtual bool UseUserFolder() { return true; }  // else the folder of all users
    virtual bool AcceptsEvent(const char* name) = 0;
    virtual ~ExternalTelemetrySource() = default;

    std::vector<TelemetryEvent> m_Events
        GUARDED_BY(g_TelemetryLock);  // this run's, oldest first; after a load earlier runs' follow
};

// The one source of this process: at most ten "STEAM_ACTION" events.
class SteamHelperTelemetry final : public ExternalTelemetrySource {
  public:
    const char* GetFileName() override { return "steam_events.json"; }
    std::int32_t GetMaxEvents() override { return 10; }
    bool AcceptsEvent(const char* name) override;
};

// For code that knows the telemetry by its globals alone. The helper itself calls LoadEvents and SaveEvents.
struct TelemetryHooks {
    std::function<bool()> m_Load;
    std::function<bool()> m_Save;
};

// Null before they are published and after they are withdrawn.
extern ExternalTelemetrySource* g_TelemetrySource GUARDED_BY(g_TelemetryLock);
extern TelemetryHooks* g_TelemetryHooks GUARDED_BY(g_TelemetryLock);

// Appends an event; always true. A full queue loses its oldest one. A text that doesn't fit its field is cut at a whole
// UTF-8 character. The caller has seen that g_TelemetrySource isn't null.
bool QueueEvent(const char* name, const char* data, std::uint64_t time) REQUIRES(g_TelemetryLock);
