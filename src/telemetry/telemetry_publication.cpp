#include "telemetry/telemetry_publication.h"

#include "telemetry/event_store.h"

void PublishTelemetry(TelemetryHooks& hooks, ExternalTelemetrySource& source) {
    const LockGuard lock(g_TelemetryLock);
    g_TelemetryHooks = &hooks;
    g_TelemetrySource = &source;
    hooks.m_Load = LoadEvents;
    hooks.m_Save = SaveEvents;
}

static void SaveQueuedEvents() {
    const LockGuard lock(g_TelemetryLock);
    if (g_TelemetrySource == nullptr || g_TelemetrySource->m_Events.empty()) return;
    SaveEvents();
    g_TelemetrySource->m_Events.clear();
}

void SaveEventsAndWithdraw() {
    const LockGuard lock(g_TelemetryLock);
    SaveQueuedEvents();
    g_TelemetryHooks = nullptr;
    g_TelemetrySource = nullptr;
}
