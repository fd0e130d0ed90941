#include "host/last_resort.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <thread>

#include "diagnostics/log.h"
#include "platform/windows_api.h"

namespace {

void LogUncaught() {
    if (std::current_exception() == nullptr) {
        LogInEmergency("none");
        return;
    }
    try {
        throw;
    } catch (const std::exception& error) {
        LogInEmergency(error.what());
    } catch (...) {
        LogInEmergency("unknown");
    }
}

[[noreturn]] void OnTerminate() {
    constexpr UINT kExitCode = 3;
    constexpr std::chrono::seconds kTimeForTheFirst{1};
    static std::atomic<DWORD> endingThread = 0;
    const DWORD ownThread = GetCurrentThreadId();
    DWORD first = 0;
    if (endingThread.compare_exchange_strong(first, ownThread)) {
        LogUncaught();
    } else if (first != ownThread) {
        // The first thread is writing its lines, and ends the process.
        std::this_thread::sleep_for(kTimeForTheFirst);
    }
    // Not exit(): it would run the code of other DLLs, with threads that hold locks cut off.
    TerminateProcess(GetCurrentProcess(), kExitCode);
    std::abort();
}

}  // namespace

void EndOnUncaughtException() {
    std::set_terminate(OnTerminate);
}
