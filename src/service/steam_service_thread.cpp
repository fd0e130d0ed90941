#include "service/steam_service_thread.h"

#include <chrono>
#include <thread>

#include "diagnostics/log.h"
#include "service/steam_service.h"

// A pause after the work, not a fixed rate.
static constexpr std::chrono::milliseconds kTickPause{33};

static void RunTicks(SteamService& service, const std::atomic<bool>& running) {
    while (running) {
        service.Tick();
        std::this_thread::sleep_for(kTickPause);
        if (service.m_ReadyToExit) {
            Log("Steam Service ready to exit.");
            return;
        }
    }
}

void SteamServiceThread(std::atomic<bool>& running, HWND window) noexcept {
    {
        SteamService service;
        if (service.Init()) {
            RunTicks(service, running);
            service.Shutdown();
        }
    }
    PostMessageW(window, WM_CLOSE, 0, 0);
}
