#include "telemetry/telemetry_publication.h"

#include "telemetry/event_store.h"

TelemetryPublication::TelemetryPublication() {
    const std::lock_guard lock(g_TelemetryLock);
    g_TelemetryHooks = &m_Hooks;
    g_TelemetrySource = &m_Source;
    m_Hooks.m_Load = LoadEvents;
    m_Hooks.m_Save = SaveEvents;
}

TelemetryPublication::~TelemetryPublication() {
    const std::lock_guard lock(g_TelemetryLock);
    if (!m_Source.m_Events.empty()) {
        SaveEvents();
        // Whatever became of the save.
        m_Source.m_Events.clear();
    }
    g_TelemetryHooks = nullptr;
    g_TelemetrySource = nullptr;
}
