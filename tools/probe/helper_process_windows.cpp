#include <windows.h>

#include <memory>

#include "tools/probe/helper_process.h"

namespace {

struct Closer {
    void operator()(void* handle) const { CloseHandle(handle); }
};

// The hidden window of the process, or with 0 of any; null if there is none.
HWND FindMessageWindow(DWORD processId, DWORD& owner) {
    HWND window = nullptr;
    for (;;) {
        window = FindWindowExW(HWND_MESSAGE, window, L"Tollmere Steam Helper", nullptr);
        if (window == nullptr) return nullptr;
        const bool isThere = GetWindowThreadProcessId(window, &owner) != 0;
        if (isThere && (processId == 0 || owner == processId)) return window;
    }
}

}  // namespace

bool CanFindHelper() {
    return true;
}

ExitStatus EndHelper(std::uint32_t processId, std::chrono::milliseconds limit) {
    DWORD owner = 0;
    const HWND window = FindMessageWindow(processId, owner);
    if (window == nullptr) return ExitStatus::NothingThere;
    // Before it is asked: the id may be another process's as soon as this one has ended.
    const std::unique_ptr<void, Closer> process(OpenProcess(SYNCHRONIZE, FALSE, owner));
    if (!process) return GetLastError() == ERROR_ACCESS_DENIED ? ExitStatus::NotAllowed : ExitStatus::NothingThere;
    if (!PostMessageW(window, WM_CLOSE, 0, 0) && GetLastError() == ERROR_ACCESS_DENIED) return ExitStatus::NotAllowed;
    // If the window was gone, the process is about to end.
    const DWORD outcome = WaitForSingleObject(process.get(), static_cast<DWORD>(limit.count()));
    return outcome == WAIT_OBJECT_0 ? ExitStatus::Done : ExitStatus::StillRuns;
}
