#pragma once

#include <atomic>

#include "platform/windows_api.h"

// The worker's body: the service from its start to its end, with a tick and a pause of 33 ms in between, again and
// again, until the service is ready to exit or `running` becomes false. `running` is written by the main thread and
// must outlive the thread. Whatever happens, the last act is to post WM_CLOSE to `window`.
void SteamServiceThread(std::atomic<bool>& running, HWND window) noexcept;
