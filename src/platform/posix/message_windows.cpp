#include "platform/posix/message_windows.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/fault_check.h"
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

// Never destroyed: other threads may outlive the process's statics.
Windows& State() {
    static Windows& windows = *new Windows;
    return windows;
}

const std::shared_ptr<Queue>& OwnQueue() {
    static thread_local const auto queue = std::make_shared<Queue>();
    return queue;
}

// Null, with the last error, if there is no such window. Under the lock.
Window* FindWindow(HWND window) {
    const auto found = State().windows.find(window);
    if (found != State().windows.end()) return &found->second;
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
        const std::lock_guard lock(State().lock);
        const Window* const found = FindWindow(window);
        if (found == nullptr) return 0;
        procedure = found->procedure;
    }
    return procedure(window, message, wParam, lParam);
}

}  // namespace

void PostCloseToAllWindows() {
    Windows& state = State();
    const std::lock_guard lock(state.lock);
    state.closeRequested = state.windows.empty();
    for (const auto& [handle, window] : state.windows) Post(handle, window, WM_CLOSE, 0, 0);
}

}  // namespace posix_layer

using namespace posix_layer;

ATOM RegisterClassExW(const WNDCLASSEXW* windowClass) {
    if (Faulted(__func__)) return 0;
    if (windowClass->cbSize != sizeof *windowClass || windowClass->lpfnWndProc == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    Windows& state = State();
    const std::lock_guard lock(state.lock);
    if (!state.classes.emplace(windowClass->lpszClassName, windowClass->lpfnWndProc).second) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    return static_cast<ATOM>(0xC000 + state.classes.size());
}

HWND CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR, DWORD, int, int, int, int, HWND parent, HMENU, HINSTANCE,
                     void*) {
    if (Faulted(__func__)) return nullptr;
    Windows& state = State();
    const std::lock_guard lock(state.lock);
    const auto found = state.classes.find(className);
    if (found == state.classes.end() || parent != HWND_MESSAGE) {
        SetLastError(parent != HWND_MESSAGE ? ERROR_INVALID_WINDOW_HANDLE : ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    state.lastWindow += 2;
    const HWND handle = reinterpret_cast<HWND>(state.lastWindow);
    const Window window = {found->second, 0, OwnQueue()};
    state.windows.emplace(handle, window);
    if (state.closeRequested) Post(handle, window, WM_CLOSE, 0, 0);
    state.closeRequested = false;
    return handle;
}

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    if (Faulted(__func__)) return 0;
    const std::lock_guard lock(State().lock);
    Window* const found = FindWindow(window);
    if (found != nullptr && index == GWLP_USERDATA) return std::exchange(found->userData, value);
    if (found != nullptr) SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    if (Faulted(__func__)) return 0;
    const std::lock_guard lock(State().lock);
    const Window* const found = FindWindow(window);
    if (found != nullptr && index == GWLP_USERDATA) return found->userData;
    if (found != nullptr) SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

BOOL GetMessageW(MSG* message, HWND window, UINT filterMin, UINT filterMax) {
    if (Faulted(__func__)) return -1;
    if (window != nullptr || filterMin != 0 || filterMax != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    Queue& queue = *OwnQueue();
    std::unique_lock lock(State().lock);
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
    const std::lock_guard lock(State().lock);
    OwnQueue()->quit = exitCode;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (Faulted(__func__)) return FALSE;
    const std::lock_guard lock(State().lock);
    const Window* const found = FindWindow(window);
    if (found == nullptr) return FALSE;
    Post(window, *found, message, wParam, lParam);
    return TRUE;
}

BOOL DestroyWindow(HWND window) {
    if (Faulted(__func__)) return FALSE;
    {
        const std::lock_guard lock(State().lock);
        const Window* const found = FindWindow(window);
        if (found == nullptr) return FALSE;
        if (found->queue != OwnQueue()) {
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        }
    }
    Send(window, WM_DESTROY, 0, 0);
    const std::lock_guard lock(State().lock);
    std::erase_if(OwnQueue()->posted, [window](const MSG& message) { return message.hwnd == window; });
    State().windows.erase(window);
    return TRUE;
}
