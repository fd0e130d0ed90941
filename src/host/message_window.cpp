#include "host/message_window.h"

static const WCHAR kWindowName[] = WIDE_TEXT("Tollmere Steam Helper");

static LRESULT CALLBACK MessageWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_DESTROY && GetWindowLongPtrW(hwnd, GWLP_USERDATA) != 0) PostQuitMessage(0);
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

HWND CreateMessageWindow(HINSTANCE instance) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = MessageWindowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = kWindowName;
    // A failure shows at once, in the next call.
    RegisterClassExW(&windowClass);
    return CreateWindowExW(0, kWindowName, kWindowName, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

void ArmQuitOnDestroy(HWND& window) {
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&window));
}

void PumpMessages() {
    MSG message;
    for (;;) {
        const BOOL result = GetMessageW(&message, nullptr, 0, 0);
        if (result == 0 || result == -1) return;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
