#include "host/process.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <thread>

#include "diagnostics/log.h"
#include "host/last_resort.h"
#include "host/message_window.h"
#include "host/options.h"
#include "host/process_probes.h"
#include "service/steam_service_thread.h"
#include "telemetry/steam_action_events.h"
#include "telemetry/telemetry_publication.h"

namespace {

// Runs the service on the worker and pumps messages until it has closed the window, or somebody else has. False, with a
// line logged, if the worker can't be started.
bool RunService(HWND& window) {
    ArmQuitOnDestroy(window);
    std::atomic<bool> running = true;  // written here, read by the worker
    std::thread worker;
    try {
        worker = std::thread(SteamServiceThread, std::ref(running), window);
    } catch (const std::exception& error) {
        Log("Failed to start worker thread (%s). Aborting process with code 1.", error.what());
        return false;
    }
    PumpMessages();
    running = false;
    worker.join();
    return true;
}

// From the options to the end of the window and the worker. The result is the exit code.
int RunHelper(HINSTANCE instance, const WCHAR* lpCmdLine) {
    ProcessCommandLine(GlobalConfigRegistry(), lpCmdLine);
    Log("Admin State: %d", static_cast<int>(GetAdminState()));

    HWND window = CreateMessageWindow(instance);
    if (window == nullptr) {
        const DWORD error = GetLastError();
        RecordSteamAction({"id", 0}, {"we", static_cast<std::int32_t>(error)});
        Log("Failed to initialize message window. Aborting process with code 1.");
        return 1;
    }
    int exitCode = 1;
    if (RunService(window)) {
        Log("Process exiting with code 0.");
        FlushLog();
        exitCode = 0;
    }
    // As a rule WM_CLOSE has destroyed it already; then this fails without harm.
    DestroyWindow(window);
    return exitCode;
}

// The events of the run are saved when the worker, which records most of them, has been joined.
int RunAndSaveEvents(HINSTANCE instance, const WCHAR* lpCmdLine) {
    TelemetryHooks hooks;
    SteamHelperTelemetry source;
    PublishTelemetry(hooks, source);
    const int exitCode = RunHelper(instance, lpCmdLine);
    SaveEventsAndWithdraw();
    return exitCode;
}

}  // namespace

int RunProcess(HINSTANCE instance, const WCHAR* lpCmdLine) noexcept {
    EndOnUncaughtException();
    g_LogFileName = WIDE_TEXT("tollmere_steam_helper.log");
    constexpr int kBannerLength = 33;  // readers of the log tell runs apart by it
    Log("%s", std::string(kBannerLength, '\\').c_str());

    const int exitCode = RunAndSaveEvents(instance, lpCmdLine);
    FlushLog();
    return exitCode;
}
