#pragma once

// The process's one window: hidden, message-only, there so that the main thread has a message loop which the worker, or
// anybody who sends WM_CLOSE, can end. Main thread only. Logs nothing.

#include "platform/windows_api.h"

// Null if it can't be created; the last error says why.
HWND CreateMessageWindow(HINSTANCE instance);

// From now on the window's destruction ends PumpMessages; before, it doesn't. `window` must live as long as the window.
void ArmQuitOnDestroy(HWND& window);

// Dispatches messages until one says that the loop is to end, as the window's destruction does, or the queue fails.
void PumpMessages();
