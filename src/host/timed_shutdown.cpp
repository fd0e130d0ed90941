#include "host/timed_shutdown.h"

#include "diagnostics/log.h"
#include "platform/windows_api.h"
#include "service/steam_service.h"

namespace {

constexpr ULONG kTimeOutMilliseconds = 20'000;

// All ones: none. No lock: the worker's uses and the wait thread's are ordered by the pipe's creation and by the stop
// of its deliveries; the time-out itself doesn't touch them. A cancel on the wait thread can't meet a time-out that is
// running out, either: we rely on the system to run all WT_EXECUTEINWAITTHREAD callbacks of the process on one thread.
HANDLE g_ShutdownEvent = INVALID_HANDLE_VALUE;
HANDLE g_ShutdownWait = INVALID_HANDLE_VALUE;

void CALLBACK OnShutdownTimeout(void* parameter, BOOLEAN) {
    if (parameter == nullptr) return;
    Log("Connection timed out, terminating.");
    static_cast<SteamService*>(parameter)->m_ReadyToExit = true;
}

// `completion` as for UnregisterWaitEx: null doesn't wait for a running time-out, all ones does.
void ReleaseHandles(HANDLE completion) {
    if (g_ShutdownWait != INVALID_HANDLE_VALUE) {
        UnregisterWaitEx(g_ShutdownWait, completion);
        g_ShutdownWait = INVALID_HANDLE_VALUE;
    }
    if (g_ShutdownEvent != INVALID_HANDLE_VALUE) {
        CloseHandle(g_ShutdownEvent);
        g_ShutdownEvent = INVALID_HANDLE_VALUE;
    }
}

}  // namespace

void ScheduleTimedShutdown(SteamService* service) {
    if (g_ShutdownEvent != INVALID_HANDLE_VALUE || g_ShutdownWait != INVALID_HANDLE_VALUE) {
        Log("Not scheduling a timed shutdown, as one appears to already be scheduled.");
        return;
    }
    Log("Scheduling a shutdown in %d ms.", static_cast<int>(kTimeOutMilliseconds));

    // Nothing ever signals the event: it only gives the wait something to time out on.
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (event == nullptr) {
        Log("Failed to create shutdown wait event.");
        return;
    }
    g_ShutdownEvent = event;
    if (!RegisterWaitForSingleObject(&g_ShutdownWait, event, OnShutdownTimeout, service, kTimeOutMilliseconds,
                                     WT_EXECUTEINWAITTHREAD | WT_EXECUTEONLYONCE)) {
        Log("Failed to schedule shutdown.");
        g_ShutdownWait = INVALID_HANDLE_VALUE;
        ReleaseHandles(nullptr);
    }
}

void CancelTimedShutdown() {
    Log("Cancel shutdown.");
    // On the wait thread a blocking call would wait for itself.
    ReleaseHandles(nullptr);
}

void StopTimedShutdown() {
    ReleaseHandles(INVALID_HANDLE_VALUE);
}
