#include "platform/posix/message_windows.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/no_destructor.h"
#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/last_error.h"
#include "platform/posix/windows_calls.h"

static_assert(sizeof(WNDCLASSEXW) == 80);

namespace posix_layer {

namespace {

// The messages of one thread.
struct Queue {
    std::deque<MSG> posted;
    std::optional<int> quit;
    std::condition_variable changed;
};

struct Window {
    WNDPROC procedure;
    LONG_PTR userData;
    std::shared_ptr<Queue> queue;  // of the thread that has created it
};

struct Windows {
    std::mutex lock;  // guards all of it, the queues included; no procedure is called under it
    std::map<std::u16string, WNDPROC> classes;
    std::map<HWND, Window> windows;
    std::uintptr_t lastWindow = 0x10000;
    bool closeRequested = false;
};

Windows& AllWindows() {
    static NoDestructor<Windows> windows;
    return *windows;
}

const std::shared_ptr<Queue>& OwnQueue() {
    static thread_local const auto queue = std::make_shared<Queue>();
    return queue;
}

// Null, with the last error, if there is no such window. Under the lock.
Window* FindWindow(HWND window) {
    const auto found = AllWindows().windows.find(window);
    if (found != AllWindows().windows.end()) return &found->second;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

void Post(HWND handle, const Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    MSG entry = {};
    entry.hwnd = handle;
    entry.message = message;
    entry.wParam = wParam;
    entry.lParam = lParam;
    window.queue->posted.push_back(entry);
    window.queue->changed.notify_all();
}

LRESULT Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    WNDPROC procedure = nullptr;
    {
        const std::lock_guard lock(AllWindows().lock);
        const Window* const found = FindWindow(window);
        if (found == nullptr) return 0;
        procedure = found->procedure;
    }
    return procedure(window, message, wParam, lParam);
}

}  // namespace

void PostCloseToAllWindows() {
    const SystemAllocations scope;
    Windows& all = AllWindows();
    const std::lock_guard lock(all.lock);
    all.closeRequested = all.windows.empty();
    for (const auto& [handle, window] : all.windows) Post(handle, window, WM_CLOSE, 0, 0);
}

}  // namespace posix_layer

using namespace posix_layer;

ATOM RegisterClassExW(const WNDCLASSEXW* windowClass) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return 0;
    if (windowClass->cbSize != sizeof *windowClass || windowClass->lpfnWndProc == nullptr)
        return WithLastError(ERROR_INVALID_PARAMETER, ATOM{0});
    Windows& all = AllWindows();
    const std::lock_guard lock(all.lock);
    if (!all.classes.emplace(windowClass->lpszClassName, windowClass->lpfnWndProc).second)
        return WithLastError(ERROR_CLASS_ALREADY_EXISTS, ATOM{0});
    return static_cast<ATOM>(0xC000 + all.classes.size());
}

HWND CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR, DWORD, int, int, int, int, HWND parent, HMENU, HINSTANCE,
                     void*) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return nullptr;
    Windows& all = AllWindows();
    const std::lock_guard lock(all.lock);
    const auto found = all.classes.find(className);
    if (found == all.classes.end() || parent != HWND_MESSAGE)
        return WithLastError(parent != HWND_MESSAGE ? ERROR_INVALID_WINDOW_HANDLE : ERROR_CANNOT_FIND_WND_CLASS,
                             nullptr);
    all.lastWindow += 2;
    const HWND handle = reinterpret_cast<HWND>(all.lastWindow);
    const Window window = {found->second, 0, OwnQueue()};
    all.windows.emplace(handle, window);
    if (all.closeRequested) Post(handle, window, WM_CLOSE, 0, 0);
    all.closeRequested = false;
    return handle;
}

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    if (Faulted(__func__)) return 0;
    const std::lock_guard lock(AllWindows().lock);
    Window* const found = FindWindow(window);
    if (found != nullptr && index == GWLP_USERDATA) return std::exchange(found->userData, value);
    if (found != nullptr) SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    if (Faulted(__func__)) return 0;
    const std::lock_guard lock(AllWindows().lock);
    const Window* const found = FindWindow(window);
    if (found != nullptr && index == GWLP_USERDATA) return found->userData;
    if (found != nullptr) SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

BOOL GetMessageW(MSG* message, HWND window, UINT filterMin, UINT filterMax) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return -1;
    if (window != nullptr || filterMin != 0 || filterMax != 0) return WithLastError(ERROR_INVALID_PARAMETER, -1);
    Queue& queue = *OwnQueue();
    std::unique_lock lock(AllWindows().lock);
    queue.changed.wait(lock, [&queue] { return !queue.posted.empty() || queue.quit; });
    if (!queue.posted.empty()) {
        *message = queue.posted.front();
        queue.posted.pop_front();
        return TRUE;
    }
    *message = {};
    message->message = WM_QUIT;
    message->wParam = static_cast<WPARAM>(*queue.quit);
    queue.quit.reset();
    return FALSE;
}

// Only keys are translated, and no message-only window gets any.
BOOL TranslateMessage(const MSG*) {
    return FALSE;
}

LRESULT DispatchMessageW(const MSG* message) {
    return Send(message->hwnd, message->message, message->wParam, message->lParam);
}

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM, LPARAM) {
    if (message == WM_CLOSE) DestroyWindow(window);
    return 0;
}

void PostQuitMessage(int exitCode) {
    const std::lock_guard lock(AllWindows().lock);
    OwnQueue()->quit = exitCode;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::lock_guard lock(AllWindows().lock);
    const Window* const found = FindWindow(window);
    if (found == nullptr) return FALSE;
    Post(window, *found, message, wParam, lParam);
    return TRUE;
}

BOOL DestroyWindow(HWND window) {
    if (Faulted(__func__)) return FALSE;
    {
        const std::lock_guard lock(AllWindows().lock);
        const Window* const found = FindWindow(window);
        if (found == nullptr) return FALSE;
        if (found->queue != OwnQueue()) return WithLastError(ERROR_ACCESS_DENIED, FALSE);
    }
    Send(window, WM_DESTROY, 0, 0);
    const std::lock_guard lock(AllWindows().lock);
    std::erase_if(OwnQueue()->posted, [window](const MSG& message) { return message.hwnd == window; });
    AllWindows().windows.erase(window);
    return TRUE;
}
