#include <windows.h>

#include <stdexcept>

#include "bench/pipe/steam_start.h"

namespace pipe_bench {

static HMODULE Load(const std::string& name) {
    const HMODULE library = LoadLibraryA(name.c_str());
    if (library == nullptr) throw std::runtime_error("can't be loaded: " + name);
    return library;
}

void StartSteam(const std::string& path) {
    // By way of a pointer to void: the compiler warns of a direct cast between types of functions.
    void* const address = reinterpret_cast<void*>(GetProcAddress(Load(path), "SteamAPI_Init"));
    const auto init = reinterpret_cast<bool (*)()>(address);
    if (init == nullptr || !init()) throw std::runtime_error("Steam doesn't start: " + path);
}

void LoadSystemLibrary(const std::string& name) {
    Load(name);
}

void CreateMessageWindow() {
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = L"pipe_floor";
    RegisterClassW(&windowClass);
    const auto name = windowClass.lpszClassName;
    if (CreateWindowExW(0, name, name, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr) == nullptr) {
        throw std::runtime_error("no window can be created");
    }
}

}  // namespace pipe_bench
