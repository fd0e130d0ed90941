#include "host/timed_shutdown.h"

#include "diagnostics/log.h"
#include "pipe/completion_lock.h"
#include "platform/time_out.h"
#include "service/steam_service.h"

namespace {

constexpr ULONG kTimeOutMilliseconds = 20'000;

OwnedEvent g_ShutdownEvent GUARDED_BY(g_CompletionLock);  // INVALID_HANDLE_VALUE: none
OwnedWait g_ShutdownWait GUARDED_BY(g_CompletionLock);    // INVALID_HANDLE_VALUE: none

// The service that the time-out may touch; null when it is cancelled. A cancel doesn't wait for a time-out that has
// begun, and the service may be gone when that one gets the lock.
const SteamService* g_TimedService GUARDED_BY(g_CompletionLock) = nullptr;

void CALLBACK OnShutdownTimeout(void* parameter, BOOLEAN) noexcept {
    const LockGuard lock(g_CompletionLock);
    if (parameter == nullptr || parameter != g_TimedService) return;
    Log("Connection timed out, terminating.");
    static_cast<SteamService*>(parameter)->m_ReadyToExit = true;
}

void Disarm() {
    const LockGuard lock(g_CompletionLock);
    g_TimedService = nullptr;
    // Without waiting for a time-out that has begun: it may be waiting for the lock.
    g_ShutdownWait.Reset();
    g_ShutdownEvent.Reset();
}

}  // namespace

void ScheduleTimedShutdown(SteamService* service) {
    const LockGuard lock(g_CompletionLock);
    if (g_ShutdownEvent || g_ShutdownWait) {
        Log("Not scheduling a timed shutdown, as one appears to already be scheduled.");
        return;
    }
    Log("Scheduling a shutdown in %d ms.", static_cast<int>(kTimeOutMilliseconds));

    switch (ArmTimeOut(g_ShutdownEvent, g_ShutdownWait, OnShutdownTimeout, service, kTimeOutMilliseconds)) {
        case TimeOutStart::NoEvent:
            Log("Failed to create shutdown wait event.");
            break;
        case TimeOutStart::NoWait:
            Log("Failed to schedule shutdown.");
            break;
        case TimeOutStart::Armed:
            g_TimedService = service;
            break;
    }
}

void CancelTimedShutdown() {
    Log("Cancel shutdown.");
    Disarm();
}

void StopTimedShutdown() {
    Disarm();
}
