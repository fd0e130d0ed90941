#include "host/process.h"

#include <atomic>
#include <string>
#include <system_error>
#include <thread>

#include "diagnostics/log.h"
#include "host/message_window.h"
#include "host/options.h"
#include "host/process_probes.h"
#include "service/steam_service_thread.h"

namespace {

// Runs the service on the worker and pumps messages until it has closed the window, or somebody else has. False, with a
// line logged, if the worker can't be started.
bool RunService(HWND& window) {
    ArmQuitOnDestroy(window);
    std::atomic<bool> running = true;  // written here, read by the worker
    std::thread worker;
    try {
        worker = std::thread(SteamServiceThread, std::ref(running), window);
    } catch (const std::system_error& error) {
        Log("Failed to start worker thread (%d). Aborting process with code 1.", error.code().value());
        return false;
    }
    PumpMessages();
    running = false;
    worker.join();
    return true;
}

}  // namespace

int RunProcess(HINSTANCE instance, const WCHAR* lpCmdLine) {
    g_LogFileName = WIDE_TEXT("tollmere_steam_helper.log");
    constexpr int kBannerLength = 33;
    Log("%s", std::string(kBannerLength, '\\').c_str());
    ProcessCommandLine(GlobalConfigRegistry(), lpCmdLine);
    Log("Admin State: %d", static_cast<int>(GetAdminState()));

    int exitCode = 1;
    HWND window = CreateMessageWindow(instance);
    if (window == nullptr) {
        Log("Failed to initialize message window. Aborting process with code 1.");
    } else if (RunService(window)) {
        Log("Process exiting with code 0.");
        FlushLog();
        exitCode = 0;
    }

    if (window != nullptr) {
        // Mostly gone already: the default handling of WM_CLOSE has destroyed it.
        DestroyWindow(window);
        window = nullptr;
    }
    FlushLog();
    return exitCode;
}
