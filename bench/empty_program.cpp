// The helper without its work: what a process costs that loads the same libraries, makes the same window and pauses as
// long between its ticks.
//     bench_empty PIPE STEAM_LIBRARY [LIBRARY...]
// Starts Steam, loads each LIBRARY, makes the window, and then listens on the pipe until its window is closed.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "diagnostics/text.h"
#include "host/message_window.h"
#include "platform/error_mode.h"
#include "platform/owners.h"

static HMODULE Load(LPCWSTR path) {
    const NoErrorDialogs scope;
    const HMODULE library = LoadLibraryExW(path, nullptr, 0);
    if (library == nullptr) std::exit(1);
    return library;
}

static void StartSteam(LPCWSTR path) {
    // By way of a pointer to void: the compiler warns of a direct cast between types of functions.
    void* const address = reinterpret_cast<void*>(GetProcAddress(Load(path), "SteamAPI_Init"));
    const auto init = reinterpret_cast<bool (*)()>(address);
    if (init == nullptr || !init()) std::exit(1);
}

static void Listen(const std::string& name) {
    constexpr DWORD kBufferSize = 65536;
    static OVERLAPPED connecting = {};
    connecting.hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE pipe =
        CreateNamedPipeA(("\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, kBufferSize, kBufferSize, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) std::exit(1);
    ConnectNamedPipe(pipe, &connecting);
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int) {
    int count = 0;
    LPWSTR* const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count < 3) return 2;
    StartSteam(arguments[2]);
    for (int i = 3; i < count; ++i) Load(arguments[i]);
    HWND window = CreateMessageWindow(instance);
    if (window == nullptr) return 1;
    ArmQuitOnDestroy(window);
    std::atomic<bool> running = true;
    std::thread worker([&] {
        Listen(WideToUtf8(arguments[1]));
        while (running) std::this_thread::sleep_for(std::chrono::milliseconds(33));
    });
    PumpMessages();
    running = false;
    worker.join();
    return 0;
}
